// One line on the terminal that tells what a long script is doing.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "host/script/Machine.h"

namespace tqx {

// A call under way. Members and classes live as long as the process, so their names are not copied.
struct CallUnderWay {
    const std::string* owner;  // null for functions
    const std::string* member;
    std::int64_t width, height;  // of the picture; -1 where there is none
};

// "PictureTQX.Scale, 5312 × 2988"
std::string TextOf(const CallUnderWay& call);

// Reads widths and heights of objects, most of which are of the same class as the one before.
class SizeReader {
  public:
    void Read(host::Object* object, CallUnderWay* call);

  private:
    const host::Class* type_ = nullptr;
    const host::Property* width_ = nullptr;  // fields of the type, or null
    const host::Property* height_ = nullptr;
};

// While a script takes longer than a second, standard error shows the member at work,
// its picture's size and the time since the script started. Gone when the script ends. Does
// nothing unless standard error is a terminal.
class StatusLine : public script::MemberObserver {
  public:
    explicit StatusLine(bool shown);
    ~StatusLine() override;

    void Before(const script::MemberUse& use) override;
    void After(const script::MemberUse& use, const host::Value& result) override;

    // Runs code that writes to the terminal, with the line out of its way.
    template <class Code>
    void Around(const Code& code) {
        const std::lock_guard lock(mutex_);
        Erase();
        code();
    }

  private:
    using Clock = std::chrono::steady_clock;

    void Watch();
    void Show();
    void Erase();

    std::mutex mutex_;
    std::condition_variable ended_;
    SizeReader sizes_;
    std::vector<CallUnderWay> calls_;  // the innermost last
    Clock::time_point start_ = Clock::now();
    bool visible_ = false;
    bool ending_ = false;
    std::thread thread_;
};

}  // namespace tqx
