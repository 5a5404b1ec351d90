// Reads the table of what members ask for, and looks members up in it.
#include "host/script/ExplainTable.h"

namespace script::explain {

namespace {

constexpr int kDeepestCalls = 50;  // of functions within one another
constexpr std::string_view kBlanks = " \t\r";

std::string_view Trim(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Takes a word off the beginning of a line.
bool TakeWord(std::string_view& line, std::string_view word) {
    if (!line.starts_with(word) || (line.size() > word.size() && line[word.size()] != ' ')) return false;
    line = Trim(line.substr(word.size()));
    return true;
}

struct Halves {
    std::string_view left;
    std::string_view right;
};

Halves SplitAt(std::string_view text, std::size_t at) {
    if (at == std::string_view::npos) return {Trim(text), {}};
    return {Trim(text.substr(0, at)), Trim(text.substr(at + 1))};
}

// The parts between commas that stand in no brackets.
std::vector<std::string_view> SplitList(std::string_view text) {
    std::vector<std::string_view> parts;
    int depth = 0;
    std::size_t begin = 0;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        if (i < text.size() && (text[i] == '(' || text[i] == ')')) depth += text[i] == '(' ? 1 : -1;
        if (i < text.size() && (text[i] != ',' || depth > 0)) continue;
        if (const std::string_view part = Trim(text.substr(begin, i - begin)); !part.empty()) parts.push_back(part);
        begin = i + 1;
    }
    return parts;
}

// "Name(a, b)": a name and the names in its brackets.
struct Head {
    std::string name;
    std::vector<std::string> parameters;
};

Head ReadHead(std::string_view text) {
    const std::size_t open = text.find('(');
    Head head{std::string(Trim(text.substr(0, open))), {}};
    if (open == std::string_view::npos) return head;
    if (!text.ends_with(')')) throw ExpressionError("needs a ) at the end of \"" + std::string(text) + '"');
    for (const std::string_view name : SplitList(text.substr(open + 1, text.size() - open - 2)))
        head.parameters.emplace_back(name);
    return head;
}

std::string KeyOf(std::string_view className, std::string_view member, bool assigned) {
    return std::string(className) + '.' + std::string(member) + (assigned ? "=" : "");
}

std::string WithParameters(const host::Declaration& method) {
    std::string text = method.name + '(';
    for (std::size_t i = 0; i < method.parameters.size(); ++i) text += (i ? ", " : "") + method.parameters[i].name;
    return text + ')';
}

// "condition : sentence", with ~ or :~ between, too.
void ReadReason(std::string_view line, Row& row) {
    const std::size_t mark = line.find_first_of(":~");
    if (mark == std::string_view::npos) throw ExpressionError("needs a : before what is to be said");
    const bool both = line.substr(mark).starts_with(":~");
    row.refuses = line[mark] == ':';
    row.skips = both || !row.refuses;
    row.sentence = Sentence::Parse(Trim(line.substr(mark + (both ? 2 : 1))));
    const std::string_view condition = Trim(line.substr(0, mark));
    row.kind = condition == "otherwise" ? Row::Kind::Otherwise : Row::Kind::Reason;
    if (row.kind == Row::Kind::Reason) row.condition = Expression::Parse(condition);
}

}  // namespace

// --- Reading ------------------------------------------------------------------------------------

Table::Table(std::string_view text) : functions_(CommonFunctions()) {
    for (int number = 1; !text.empty(); ++number) {
        const std::size_t end = text.find('\n');
        const std::string_view line = Trim(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (line.empty() || line.starts_with('\'')) continue;
        try {
            ReadLine(line, number);
        } catch (const ExpressionError& error) {
            throw ExpressionError(std::to_string(number) + ": " + error.what());
        }
    }
}

void Table::ReadLine(std::string_view line, int number) {
    if (TakeWord(line, "class")) {
        class_ = line;
        rows_ = nullptr;
    } else if (TakeWord(line, "members")) {
        ReadSection(line);
    } else if (TakeWord(line, "reasons")) {
        ReadGroup(line);
    } else {
        ReadRow(line, number);
    }
}

void Table::ReadSection(std::string_view names) {
    section_ = sections_.emplace_back(std::make_unique<Section>()).get();
    rows_ = &section_->rows;
    for (std::string_view name : SplitList(names)) {
        const bool assigned = name.ends_with('=');
        if (assigned) name = Trim(name.substr(0, name.size() - 1));
        if (!index_.emplace(KeyOf(class_, name, assigned), section_).second)
            throw ExpressionError(std::string(name) + " stands here twice");
    }
}

void Table::ReadGroup(std::string_view text) {
    Head head = ReadHead(text);
    std::unique_ptr<Group>& group = groups_[head.name];
    if (group) throw ExpressionError("these reasons stand here twice: " + head.name);
    group = std::make_unique<Group>(Group{std::move(head.parameters), {}});
    rows_ = &group->rows;
    section_ = nullptr;
}

void Table::ReadFunction(std::string_view head, std::string_view body) {
    const auto work = [this, parameters = ReadHead(head).parameters, value = Expression::Parse(body)](
                          std::span<const Subject> arguments) -> std::optional<host::Value> {
        if (arguments.size() != parameters.size() || depth_ >= kDeepestCalls) return {};
        Scope scope{{}, &functions_};
        for (std::size_t i = 0; i < parameters.size(); ++i) scope.names[parameters[i]] = arguments[i];
        ++depth_;
        const auto result = value.Evaluate(scope);
        --depth_;
        return result ? std::optional(result->value) : std::nullopt;
    };
    functions_[ReadHead(head).name] = work;
}

void Table::ReadRow(std::string_view line, int number) {
    Row row;
    row.line = number;
    if (TakeWord(line, "let")) {
        const auto [name, value] = SplitAt(line, line.find('='));
        if (name.find('(') != std::string_view::npos) return ReadFunction(name, value);
        row.kind = Row::Kind::Let;
        row.name = name;
        row.condition = Expression::Parse(value);
    } else if (TakeWord(line, "use")) {
        ReadUse(line, row);
    } else if (TakeWord(line, "done if")) {
        row.kind = Row::Kind::Done;
        row.condition = Expression::Parse(line);
    } else if (ReadTrait(line)) {
        return;
    } else {
        ReadReason(line, row);
    }
    if (!rows_) throw ExpressionError("stands below no members");
    rows_->push_back(std::move(row));
}

void Table::ReadUse(std::string_view call, Row& row) const {
    row.kind = Row::Kind::Use;
    row.condition = Expression::Parse(call);
    const auto group = groups_.find(row.condition.Word());
    const bool above = group != groups_.end() && &group->second->rows != rows_;
    if (!above) throw ExpressionError("knows no reasons " + row.condition.Word());
    row.group = group->second.get();
    if (row.group->parameters.size() != row.condition.Arguments().size())
        throw ExpressionError("gives " + row.condition.Word() + " too many or too few arguments");
}

// What holds for the members of a section as such; false for any other line.
bool Table::ReadTrait(std::string_view line) {
    if (!section_) return false;
    if (line == "closes") return section_->closes = true;
    if (!TakeWord(line, "refuses if")) return false;
    const auto [condition, text] = SplitAt(line, line.find(':'));
    section_->refusal = Expression::Parse(condition);
    section_->refusalText = text;
    return true;
}

// --- Asking -------------------------------------------------------------------------------------

const Section* Table::FindKey(std::string_view className, std::string key, bool assigned) const {
    const auto found = index_.find(KeyOf(className, key, assigned));
    return found == index_.end() ? nullptr : found->second;
}

const Section* Table::Find(std::string_view className, const host::Declaration& method, bool assigned) const {
    const Section* const exact = FindKey(className, WithParameters(method), assigned);
    return exact ? exact : FindKey(className, method.name, assigned);
}

const Section* Table::Find(std::string_view className, std::string_view property, bool assigned) const {
    return FindKey(className, std::string(property), assigned);
}

namespace {

// Collects the rows that apply.
class RowWalk {
  public:
    explicit RowWalk(bool refused) : refused_(refused) {}

    // False when a row says that nothing below counts.
    bool Walk(const std::vector<Row>& rows, Scope& scope) {
        for (const Row& row : rows)
            if (!Visit(row, scope)) return false;
        return true;
    }

    std::vector<BrokenPrecondition> Take() {
        if (broken_.empty()) return std::move(fallback_);
        return std::move(broken_);
    }

  private:
    bool Visit(const Row& row, Scope& scope) {
        const bool told = refused_ ? row.refuses : row.skips;
        switch (row.kind) {
            case Row::Kind::Done:
                return !row.condition.Holds(scope);
            case Row::Kind::Use:
                return Enter(row, scope);
            case Row::Kind::Let:
                if (auto value = row.condition.Evaluate(scope))
                    scope.names[row.name] = std::move(*value);
                else
                    scope.names.erase(row.name);
                break;
            case Row::Kind::Otherwise:
                if (told && fallback_.empty()) fallback_.push_back({&row, row.sentence.Fill(scope)});
                break;
            case Row::Kind::Reason:
                if (told && row.condition.Holds(scope)) broken_.push_back({&row, row.sentence.Fill(scope)});
                break;
        }
        return true;
    }

    // Rows of a group see what the member's rows see, and their own parameters. Where an argument has
    // no value they don't apply.
    bool Enter(const Row& row, const Scope& outer) {
        Scope scope = outer;
        for (std::size_t i = 0; i < row.group->parameters.size(); ++i) {
            auto argument = row.condition.Arguments()[i].Evaluate(outer);
            if (!argument) return true;
            scope.names[row.group->parameters[i]] = std::move(*argument);
        }
        return Walk(row.group->rows, scope);
    }

    bool refused_;
    std::vector<BrokenPrecondition> broken_;
    std::vector<BrokenPrecondition> fallback_;
};

void AddReasons(const std::vector<Row>& rows, std::vector<const Row*>& reasons) {
    for (const Row& row : rows)
        if (!row.sentence.Empty()) reasons.push_back(&row);
}

}  // namespace

std::vector<BrokenPrecondition> Table::Broken(const Section& section, Scope scope, bool refused) const {
    scope.functions = &functions_;
    RowWalk walk(refused);
    walk.Walk(section.rows, scope);
    return walk.Take();
}

std::vector<const Row*> Table::Reasons() const {
    std::vector<const Row*> reasons;
    for (const auto& [name, group] : groups_) AddReasons(group->rows, reasons);
    for (const auto& section : sections_) AddReasons(section->rows, reasons);
    return reasons;
}

}  // namespace script::explain
