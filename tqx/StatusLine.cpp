#include "tqx/StatusLine.h"

#include <cstdio>

#include "host/Call.h"

namespace tqx {

namespace {

constexpr auto kFirst = std::chrono::milliseconds(1000);
constexpr auto kAgain = std::chrono::milliseconds(200);

std::string NumberText(host::Object* object, std::string_view name) {
    const host::Property* property = object ? object->type->FindProperty(name) : nullptr;
    if (!property || property->getter.fieldOffset < 0) return {};
    return std::to_string(host::GetProperty(*property, object).ToInt64());
}

}  // namespace

std::string TextOf(const script::MemberUse& use) {
    std::string text = use.Name();
    if (use.Owner() && !use.Owner()->name().empty()) text = use.Owner()->name() + '.' + text;
    const std::string width = NumberText(use.self, "Width");
    const std::string height = NumberText(use.self, "Height");
    if (!width.empty() && !height.empty()) text += ", " + width + " × " + height;
    return text;
}

StatusLine::StatusLine(bool shown) {
    if (shown) thread_ = std::thread([this] { Watch(); });
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
    std::string text = TextOf(use);
    const std::lock_guard lock(mutex_);
    calls_.push_back(std::move(text));
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
    const std::string call = calls_.empty() ? "the script" : calls_.back();
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
