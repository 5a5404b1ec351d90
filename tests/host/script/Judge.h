// Holds every use of a plug-in's member against the table of its preconditions, by what it really did.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/script/ExplainTable.h"
#include "host/script/Machine.h"
#include "tests/support/PluginFixture.h"

// What became of one use.
struct Verdict {
    bool refused = false;  // gave Nil, False, 0 or no bytes, made no valid picture, changed no byte or number
    std::vector<script::explain::BrokenPrecondition> told;     // the rows that explain it
    std::vector<script::explain::BrokenPrecondition> refuted;  // rows that say it refuses, but it did not
};

// The table beside the plug-in under test, without the lines in which pictures were closed.
std::unique_ptr<script::explain::Table> PluginTable();

class Judge : public script::MemberObserver {
  public:
    using Report = std::function<void(const script::MemberUse&, const Verdict&)>;

    // Reports each use of a member of PictureTQX that raised no exception.
    Judge(const script::explain::Table& table, Report report) : table_(table), report_(std::move(report)) {}

    void Before(const script::MemberUse& use) override;
    void After(const script::MemberUse& use, const host::Value& result) override;

    // Calls a method as a script would.
    host::Value Call(const host::Method& method, const support::Ref<support::Object>& self, support::Values arguments);
    void Assign(const host::Method& method, const support::Ref<support::Object>& self, support::Values arguments,
                const host::Value& assigned);

    host::Value Get(const host::Property& property, const support::Ref<support::Object>& self);

  private:
    // A use under way.
    struct Pending {
        const script::explain::Section* section = nullptr;  // null: not a use to be judged
        support::Bytes pixels;
        std::vector<script::explain::BrokenPrecondition> refusals, skips;  // of a member without a result
    };

    const script::explain::Table& table_;
    Report report_;
    std::vector<Pending> pending_;
};
