// Scenes of chance: chains of views of pictures in every kind of unmapped memory, with sharing
// and without, of any sizes. A seed always gives the same scene.
#pragma once

#include "tests/plugin/filters/FilterScenes.h"

namespace scenes {

// Pictures are at most about this large.
struct Most {
    int width = 90;
    int height = 16;
};

FilterScene RandomScene(std::uint64_t seed, const Most& most = {});

// A filter with some arguments, and what it should do.
struct Trial {
    Filter filter;
    Reference reference;
};

// Runs a filter in `count` random scenes, each with arguments of its own.
void ExpectRandomScenes(int count, const std::function<Trial(support::Random& random)>& draw, const Most& most = {},
                        const SizeOfResult& sizeOfResult = SameSize);

// A number for arguments that take any: often an extreme, else one of an ordinary size.
int AnyInteger(support::Random& random);
double AnyDouble(support::Random& random);

}  // namespace scenes
