// Why a call of a plug-in gave nothing, as far as it can be seen from outside.
//
// The rules know no method: they go by the state of the objects (a Boolean property Valid, Width
// and Height), by nil, and by parameters that are called like a family of the class's constants,
// a size or an index.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "script/Diagnostics.h"
#include "script/Machine.h"

namespace script {

// Objects whose Close was called, and where. An address counts until an object comes from there
// again.
using ClosedObjects = std::map<const host::Object*, Position>;

class Explainer : public CallObserver {
  public:
    // Explains calls of the classes given, one line each to `tell`.
    Explainer(std::string path, std::set<const host::Class*> classes, std::function<void(std::string_view)> tell)
        : path_(std::move(path)), classes_(std::move(classes)), tell_(std::move(tell)) {}

    void BeforeCall(const host::Method& method, host::Object* self, std::span<const host::Value> arguments,
                    Position at) override;
    void AfterCall(const host::Method& method, host::Object* self, std::span<const host::Value> arguments,
                   const host::Value& result, Position at) override;

  private:
    std::string path_;
    std::set<const host::Class*> classes_;
    std::function<void(std::string_view)> tell_;
    std::vector<std::string> reasons_;  // of the calls under way, seen before they began
    ClosedObjects closed_;
};

// What is wrong with a call before it is made; empty when nothing can be seen.
std::string ReasonAgainst(const host::Method& method, host::Object* self, std::span<const host::Value> arguments,
                          const ClosedObjects& closed);

}  // namespace script
