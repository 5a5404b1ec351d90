// A program that grows: what is typed at a prompt, step by step. Variables, routines and classes of
// one step are there for the next ones. A name that is declared again means the new variable or
// routine from then on.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/objects/Value.h"
#include "host/script/Ast.h"
#include "host/script/Diagnostics.h"

namespace script {

struct StepResult {
    bool finished = false;  // the last line was reached
    bool ended = false;     // by Quit
    int exitCode = 0;       // of Quit
    bool hasValue = false;
    host::Value value;  // of a step that is nothing but an expression
};

class Session {
  public:
    // `print` takes each line of Print, `complain` messages with their line ends, `write` text of StdOut as
    // it comes; without it `print` gets its lines.
    Session(std::function<void(std::string_view)> print, std::function<void(std::string_view)> complain,
            std::function<void(std::string_view)> write = {});

    // Destroys what the variables hold.
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Checks and runs some lines. Lines with mistakes declare nothing and run nothing; an exception
    // that nobody takes, and an interrupt, end only the step.
    StepResult Run(std::string lines);

    // Names that begin like the last word of a line, in alphabetical order: those of what stands
    // before its last dot, or whatever may begin an expression.
    std::vector<std::string> Completions(std::string_view line);

  private:
    struct State;

    std::unique_ptr<Program> ParseStep(const std::string& lines, const char* lineBefore,
                                       Diagnostics& diagnostics) const;
    bool Accept(std::unique_ptr<Program> program, Diagnostics& diagnostics);
    bool AcceptExpression(const std::string& lines);
    StepResult RunAccepted();
    std::vector<std::string> NamesAtStart() const;

    std::unique_ptr<State> state_;
};

}  // namespace script
