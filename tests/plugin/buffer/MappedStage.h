// Pictures of which some are mapped, and the same ones in memory.
#pragma once

#include <string>
#include <vector>

#include "tests/support/Interpose.h"
#include "tests/support/MappedPictures.h"
#include "tests/support/PictureOperations.h"

namespace mapped {

using support::Bytes;
using support::Object;
using support::Ref;

// Which pictures are mapped.
enum Mapped : unsigned { kNone = 0, kSelf = 1, kOther = 2, kDestination = 4, kIntermediate = 8, kAll = 15 };

enum class Destination { Given, Factory, Self };

enum class View {
    Whole,
    Clip,  // of a picture of few rows a window; begins at pixel 3 of row 2
    MirroredClip,
    RedOfClip,
    ColorsOfClip,
};

struct Setting {
    const char* name;
    int format;
    int width, height;
    unsigned mapped;
    Destination destination = Destination::Given;
    View view = View::Clip;
    int bytesPerRow = support::kFiveRowWidth;  // about, of the mapped pictures behind clips
};

void PrintTo(const Setting& setting, std::ostream* stream);

// A folder for scratch files of wide rows of which little is touched: in memory where there is
// such a file system, so that they cost just that. While one lives, blocks are not reserved.
class ScratchFolder {
  public:
    ScratchFolder();
    ~ScratchFolder();  // fails the test unless the folder is empty
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::string& path() const { return path_; }

  private:
    std::string path_;
    const support::FailingCall noReservation_;
};

// The pictures of one run, in memory or mapped, with the same random bytes in both cases. What a
// stage's factory makes is a part of the stage.
class Stage {
  public:
    Stage(const Setting& setting, bool inMemory, const std::string& folder);
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    support::Pictures pictures;

    // All bytes of all pictures made by now and of what lies around them, rows from the top.
    Bytes RootBytes() const;

  private:
    // The picture that a view is of: its bytes to a little past the right edge of the view count.
    struct Root {
        Ref<Object> picture;
        std::int64_t bytesPerRow;
    };

    bool whole() const { return setting_.view == View::Whole; }
    void UseFactory();
    Ref<Object> MakeRoot(const std::string& name, bool mapped, int width, int height, int format) const;
    Ref<Object> Make(const std::string& name, Mapped role, int width, int height, int format);
    Ref<Object> ViewOf(const Ref<Object>& root, int width, int height, int format) const;

    const Setting setting_;
    const unsigned mapped_;
    const std::string folder_;
    std::vector<Root> roots_;
};

}  // namespace mapped
