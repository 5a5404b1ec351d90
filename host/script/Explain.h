// Says why a member of a plug-in gave nothing, did nothing or left pixels out, one line each.
//
// What members ask for stands in a table beside the plug-in (ExplainTable.h), here is no rule about
// any of them. A call is held against it before it is made where it gives nothing back, and after it
// where it does, since it is then known whether it refused.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>

#include "host/script/Diagnostics.h"
#include "host/script/ExplainTable.h"
#include "host/script/Machine.h"

namespace script {

// The table that ships beside a plug-in: its path with the extension .explain. Null when there is
// none, or after a message to `complain` for one that can't be read.
std::unique_ptr<explain::Table> ReadTable(const std::string& pluginPath,
                                          const std::function<void(std::string_view)>& complain);

// A use of a member as its table sees it.
explain::Scope ScopeOf(const MemberUse& use, const host::Value& result);

class Explainer : public MemberObserver {
  public:
    // Explains what is done with members of the classes given, which are of plug-ins.
    Explainer(std::string path, std::set<const host::Class*> classes, std::function<void(std::string_view)> tell);

    void Before(const MemberUse& use) override;
    void After(const MemberUse& use, const host::Value& result) override;
    void OnNil(const MemberUse& use) override;

  private:
    // What there is to say of a use.
    struct Finding {
        std::string outcome;  // "gave Nil"; empty: nothing to say
        std::string reason;
    };

    bool IsOurs(const MemberUse& use) const { return use.Owner() && classes_.contains(use.Owner()); }
    const explain::Section* SectionOf(const MemberUse& use) const;
    std::string ReasonOf(const MemberUse& use, const host::Value& result, bool refused) const;
    Finding FindWithoutResult(const MemberUse& use) const;
    Finding FindWithResult(const MemberUse& use, const host::Value& result) const;
    void NoteLives(const MemberUse& use, const host::Value& result);
    void Tell(const MemberUse& use, const Finding& finding) const;

    std::string path_;
    std::set<const host::Class*> classes_;
    std::function<void(std::string_view)> tell_;
    std::map<const host::Class*, std::shared_ptr<explain::Table>> tables_;
    std::vector<Finding> found_;  // of the uses under way, before they began
    // Objects that were closed, and where. An address counts until an object comes from there again.
    std::map<const host::Object*, Position> closed_;
};

}  // namespace script
