// Why members of a plug-in refuse: a text that ships beside the plug-in, PLUGIN.explain, one
// precondition a row.
//
//   ' A comment.
//   let left(x, w) = Min(x, x + w)            a function for the expressions below
//
//   reasons picture(p)                        rows that several members share
//     Not p.Valid : {p} is not valid          a precondition that is broken, and what to say then
//     p.Height = 0 : {p} has no rows
//
//   class PictureTQX
//   members Scale, ScaleFast                  the rows of these, overloads included
//     let last = self.Width - 1               a name for the rows below
//     source Is Nil : source is Nil           told where the member refuses
//     width > last ~ columns are missing      told where it does not, and yet leaves pixels out
//     p.Memory Is Nil :~ {p} was closed       both
//     use picture(source)                     rows of a group
//     done if width = 1                       nothing below counts then
//     otherwise : memory is short             told where a member refuses and no other row does
//
// A member stands with its parameters, "Constructor(width, height)", where its overloads differ; with
// "=" behind it for assignments. A line "refuses if CONDITION : WHAT HAPPENED" says when a member
// refuses whose result doesn't tell; "closes" that it takes away what `closedAt` tells of.
//
// Expressions (ExplainExpression.h) know the parameters by their names, `self`, the `value` of an
// assignment and the `result` of a member that gave one.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/calls/Declaration.h"
#include "host/script/ExplainExpression.h"

namespace script::explain {

struct Group;

// One line of a table.
struct Row {
    enum class Kind { Reason, Otherwise, Use, Let, Done };

    Kind kind = Kind::Reason;
    bool refuses = false;  // told where the member refuses
    bool skips = false;    // told where it doesn't
    Expression condition;  // of a Let its value, of a Use its arguments
    Sentence sentence;
    std::string name;              // of a Let
    const Group* group = nullptr;  // of a Use
    int line = 0;
};

struct Group {
    std::vector<std::string> parameters;
    std::vector<Row> rows;
};

// The rows of a member.
struct Section {
    std::vector<Row> rows;
    Expression refusal;       // when a member refuses whose result doesn't tell, and
    std::string refusalText;  // what happened then; empty for all others
    bool closes = false;
};

// A row that applies to a call.
struct BrokenPrecondition {
    const Row* row;
    std::string sentence;
};

class Table {
  public:
    // Throws ExpressionError, which begins with the line's number, for what can't be read.
    explicit Table(std::string_view text);
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;

    // The rows of a member of a class; null where the table has none. Assignments have their own.
    const Section* Find(std::string_view className, const host::Declaration& method, bool assigned) const;
    const Section* Find(std::string_view className, std::string_view property, bool assigned) const;

    // Every row that applies to a call which refused, or did not, in the order of the table.
    std::vector<BrokenPrecondition> Broken(const Section& section, Scope scope, bool refused) const;

    // Adds a function for the expressions; one of the table's own stays.
    void Define(std::string name, Function function) { functions_.emplace(std::move(name), std::move(function)); }

    // Every row with a sentence, for tests.
    std::vector<const Row*> Reasons() const;

  private:
    void ReadLine(std::string_view line, int number);
    void ReadSection(std::string_view names);
    void ReadGroup(std::string_view head);
    void ReadFunction(std::string_view head, std::string_view body);
    void ReadRow(std::string_view line, int number);
    void ReadUse(std::string_view call, Row& row) const;
    bool ReadTrait(std::string_view line);
    const Section* FindKey(std::string_view className, std::string key, bool assigned) const;

    ByName<Function> functions_;
    ByName<std::unique_ptr<Group>> groups_;
    std::vector<std::unique_ptr<Section>> sections_;
    ByName<const Section*> index_;  // by "Class.Member", "Class.Member(a, b)", with "=" behind
    std::string class_;
    Section* section_ = nullptr;        // the one that is being read
    std::vector<Row>* rows_ = nullptr;  // to which rows are added
    int depth_ = 0;                     // of the functions under way
};

}  // namespace script::explain
