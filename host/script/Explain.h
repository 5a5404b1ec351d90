// Why a call of a plug-in gave nothing, or a property of it kept its value, as far as it can be
// seen from outside.
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

#include "host/script/Diagnostics.h"
#include "host/script/Machine.h"

namespace script {

// Objects whose Close was called, and where. An address counts until an object comes from there
// again.
using ClosedObjects = std::map<const host::Object*, Position>;

class Explainer : public MemberObserver {
  public:
    // Explains what is done with members of the classes given, one line each to `tell`.
    Explainer(std::string path, std::set<const host::Class*> classes, std::function<void(std::string_view)> tell)
        : path_(std::move(path)), classes_(std::move(classes)), tell_(std::move(tell)) {}

    void Before(const MemberUse& use) override;
    void After(const MemberUse& use, const host::Value& result) override;
    void OnNil(const MemberUse& use) override;

  private:
    bool IsOurs(const MemberUse& use) const { return use.Owner() && classes_.contains(use.Owner()); }
    void Tell(const MemberUse& use, const std::string& outcome, const std::string& reason) const;

    std::string path_;
    std::set<const host::Class*> classes_;
    std::function<void(std::string_view)> tell_;
    std::vector<std::string> reasons_;  // of the uses under way, seen before they began
    ClosedObjects closed_;
};

// What is wrong with a use before it is made; empty when nothing can be seen.
std::string ReasonAgainst(const MemberUse& use, const ClosedObjects& closed);

}  // namespace script
