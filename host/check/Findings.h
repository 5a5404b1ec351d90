// What can be said of a plug-in's records without calling anything.
#pragma once

#include <string>
#include <vector>

#include "host/check/Table.h"

namespace host::check {

// Sentences about members, and how many things were looked at.
class Findings {
  public:
    // Counts one thing looked at; it is a fault unless it holds.
    void Expect(bool holds, const std::string& member, const std::string& fault) {
        ++looked_;
        if (!holds) faults_.push_back(member + " " + fault);
    }

    // The same for what may be meant so.
    void Hint(bool holds, const std::string& member, const std::string& hint) {
        ++looked_;
        if (!holds) hints_.push_back(member + " " + hint);
    }

    std::int64_t looked() const { return looked_; }
    bool AllHold() const { return faults_.empty(); }

    // The first fault or else the first hint, and how many there are; `praise` when all holds.
    Outcome Judged(std::string praise) const {
        Outcome outcome{CheckStatus::Pass, looked_, std::move(praise), "", {}};
        for (const auto& [status, sentences] : {std::pair{CheckStatus::Fail, &faults_}, {CheckStatus::Warn, &hints_}})
            if (outcome.status == CheckStatus::Pass && !sentences->empty()) {
                outcome.status = status;
                outcome.detail = sentences->front();
                if (sentences->size() > 1)
                    outcome.detail += " (and " + std::to_string(sentences->size() - 1) + " more)";
            }
        return outcome;
    }

  private:
    std::int64_t looked_ = 0;
    std::vector<std::string> faults_, hints_;
};

}  // namespace host::check
