// A thread that draws the line, and erases it in time.
#include "tqx/StatusLine.h"

#include <cstdio>

#include "host/calls/Call.h"
#include "platform/ScratchFiles.h"

namespace tqx {

namespace {

constexpr auto kFirst = std::chrono::milliseconds(1000);
constexpr auto kAgain = std::chrono::milliseconds(200);

// A property that can be read without running code of the plug-in.
const host::Property* FieldOf(const host::Class& type, std::string_view name) {
    const host::Property* const property = type.FindProperty(name);
    return property && property->getter.fieldOffset >= 0 ? property : nullptr;
}

}  // namespace

void SizeReader::Read(host::Object* object, CallUnderWay* call) {
    call->width = call->height = -1;
    if (!object) return;
    if (object->type != type_) {
        type_ = object->type;
        width_ = FieldOf(*type_, "Width");
        height_ = FieldOf(*type_, "Height");
    }
    if (!width_ || !height_) return;
    call->width = host::GetProperty(*width_, object).ToInt64();
    call->height = host::GetProperty(*height_, object).ToInt64();
}

std::string TextOf(const CallUnderWay& call) {
    std::string text = call.owner ? *call.owner + '.' + *call.member : *call.member;
    if (call.width >= 0) text += ", " + std::to_string(call.width) + " × " + std::to_string(call.height);
    return text;
}

StatusLine::StatusLine(bool shown) {
    if (!shown) return;
    const platform::HeldSignals held;  // for the thread's whole life: they are the script's
    thread_ = std::thread([this] { Watch(); });
}

StatusLine::~StatusLine() {
    if (!thread_.joinable()) return;
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    ended_.notify_all();
    thread_.join();
    Erase();
}

void StatusLine::Before(const script::MemberUse& use) {
    if (!thread_.joinable()) return;
    const host::Class* const owner = use.Owner();
    CallUnderWay call{owner && !owner->name().empty() ? &owner->name() : nullptr, &use.Name(), -1, -1};
    sizes_.Read(use.self, &call);
    const std::lock_guard lock(mutex_);
    calls_.push_back(call);
}

void StatusLine::After(const script::MemberUse&, const host::Value&) {
    if (!thread_.joinable()) return;
    const std::lock_guard lock(mutex_);
    calls_.pop_back();
}

void StatusLine::Watch() {
    std::unique_lock lock(mutex_);
    auto pause = kFirst;
    while (!ended_.wait_for(lock, pause, [this] { return ending_; })) {
        pause = kAgain;
        Show();
    }
}

void StatusLine::Show() {
    const double seconds = std::chrono::duration<double>(Clock::now() - start_).count();
    const std::string call = calls_.empty() ? "the script" : TextOf(calls_.back());
    std::fprintf(stderr, "\r\033[K%s, %.1f s", call.c_str(), seconds);
    std::fflush(stderr);
    visible_ = true;
}

void StatusLine::Erase() {
    if (!visible_) return;
    std::fputs("\r\033[K", stderr);
    std::fflush(stderr);
    visible_ = false;
}

}  // namespace tqx
