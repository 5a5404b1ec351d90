// Pixels before and after each use, held against what the table says of it.
#include "tests/host/script/Judge.h"

#include "host/script/Explain.h"
#include "tests/support/Places.h"

namespace {

using namespace support;
using script::MemberUse;
using script::explain::BrokenPrecondition;

bool IsConstructor(const MemberUse& use) {
    return use.method && host::SameName(use.method->declaration.name, "Constructor");
}

bool GivesNothing(const MemberUse& use) {
    return use.method && !IsConstructor(use) &&
           (use.assigned || use.method->declaration.result.kind == host::Kind::None);
}

// Every byte that can be reached of a picture.
void AddPixels(const Ref<Object>& picture, Bytes& all) {
    if (!picture || picture->type->name() != "PictureTQX" || !GetBool(picture, "Valid")) return;
    Bytes bytes;
    if (const auto block = GetObject(picture, "MemoryTarget")) {
        bytes = BlockBytes(block);
    } else if (GetObject(picture, "Memory")) {
        const auto size = static_cast<std::size_t>(GetInt(picture, "RowSize"));
        for (std::int64_t y = 0; y < GetInt(picture, "Height"); ++y) {
            const auto row = CallObject(picture, "RawRow", y);
            if (!row) continue;
            const Bytes rowBytes = BlockBytes(row, size);
            bytes.insert(bytes.end(), rowBytes.begin(), rowBytes.end());
        }
    }
    all.insert(all.end(), bytes.begin(), bytes.end());
}

Bytes PixelsOf(const MemberUse& use) {
    Bytes all;
    AddPixels(Ref<Object>::Share(use.self), all);
    for (const Value& argument : use.arguments) AddPixels(Ref<Object>::Share(argument.object()), all);
    return all;
}

bool KeepsItsNumber(const MemberUse& use) {
    return use.assigned->IsNumber() &&
           GetInt(Ref<Object>::Share(use.self), use.property->name) != use.assigned->ToInt64();
}

bool SaysNo(const MemberUse& use, const Value& result) {
    if (use.property && use.assigned) return KeepsItsNumber(use);
    if (use.property && result.IsNumber()) return result.ToDouble() == 0;
    if (use.property && result.kind() == host::Kind::Boolean) return false;
    if (IsConstructor(use)) return !GetBool(Ref<Object>::Share(use.self), "Valid");
    if (result.kind() == host::Kind::Boolean) return !result.ToBoolean();
    if (result.kind() == host::Kind::String) return result.text().empty();
    return result.IsNil();
}

// Without the rows that are told in both cases or as a last resort.
std::vector<BrokenPrecondition> OnlyRefusing(std::vector<BrokenPrecondition> rows) {
    std::erase_if(rows, [](const BrokenPrecondition& broken) {
        return broken.row->skips || broken.row->kind == script::explain::Row::Kind::Otherwise;
    });
    return rows;
}

}  // namespace

std::unique_ptr<script::explain::Table> PluginTable() {
    auto table = script::ReadTable(PluginFile(), [](std::string_view text) { ADD_FAILURE() << text; });
    if (table) table->Define("ClosedAt", [](std::span<const script::explain::Subject>) { return Value(""); });
    return table;
}

void Judge::Before(const MemberUse& use) {
    Pending& pending = pending_.emplace_back();
    if (!use.Owner() || use.Owner()->name() != "PictureTQX") return;
    const bool assigned = use.assigned != nullptr;
    pending.section = use.method ? table_.Find("PictureTQX", use.method->declaration, assigned)
                                 : table_.Find("PictureTQX", use.property->name, assigned);
    if (!pending.section || !GivesNothing(use)) return;
    pending.refusals = table_.Broken(*pending.section, script::ScopeOf(use, {}), true);
    pending.skips = table_.Broken(*pending.section, script::ScopeOf(use, {}), false);
    pending.pixels = PixelsOf(use);
}

void Judge::After(const MemberUse& use, const Value& result) {
    const Pending pending = std::move(pending_.back());
    pending_.pop_back();
    if (!pending.section || host::Runtime::Get().HasRaised()) return;
    Verdict verdict;
    if (GivesNothing(use)) {
        verdict.refused = PixelsOf(use) == pending.pixels;
        verdict.told = verdict.refused ? pending.refusals : pending.skips;
        if (!verdict.refused) verdict.refuted = OnlyRefusing(pending.refusals);
    } else {
        verdict.refused = SaysNo(use, result);
        verdict.told = table_.Broken(*pending.section, script::ScopeOf(use, result), verdict.refused);
        if (!verdict.refused)
            verdict.refuted = OnlyRefusing(table_.Broken(*pending.section, script::ScopeOf(use, result), true));
    }
    report_(use, verdict);
}

Value Judge::Call(const host::Method& method, const Ref<Object>& self, Values arguments) {
    const MemberUse use{.method = &method, .self = self.get(), .arguments = arguments};
    Before(use);
    Value result = host::Invoke(method, self.get(), arguments);
    After(use, result);
    return result;
}

void Judge::Assign(const host::Method& method, const Ref<Object>& self, Values arguments, const Value& assigned) {
    const MemberUse use{.method = &method, .self = self.get(), .arguments = arguments, .assigned = &assigned};
    Before(use);
    host::InvokeSetter(method, self.get(), arguments, assigned);
    After(use, {});
}

Value Judge::Get(const host::Property& property, const Ref<Object>& self) {
    const MemberUse use{.property = &property, .self = self.get()};
    Before(use);
    Value result = host::GetProperty(property, self.get());
    After(use, result);
    return result;
}
