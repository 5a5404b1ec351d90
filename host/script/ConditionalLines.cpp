// #If and its kin, on the tokens of a script before they are parsed.
#include "host/script/ConditionalLines.h"

#include <map>
#include <optional>
#include <string>

#include "host/messages/ParserMessages.h"
#include "host/objects/NearestName.h"
#include "host/script/BuildConstants.h"

namespace script {

namespace {

using host::Token;
using host::TokenKind;

constexpr int kDeepestCondition = 100;  // brackets and Nots within one another

struct Mistake {
    const Token* at;
    host::Said message;
};

bool EndsLine(const Token& token) { return token.kind == TokenKind::NewLine || token.kind == TokenKind::End; }

using Constants = std::map<std::string, double, std::less<>>;  // by lower-case name; a Boolean is 0 or 1

// A condition from left to right; throws Mistake.
class Condition {
  public:
    Condition(const Token* at, const Constants& constants) : at_(at), constants_(constants) {}

    bool Holds() {
        const double value = Either();
        if (at_->Is("then")) ++at_;
        if (!EndsLine(*at_)) Fail(kConditionSays.noEnd(at_->text));
        return value != 0;
    }

  private:
    [[noreturn]] void Fail(host::Said message) { throw Mistake{at_, std::move(message)}; }

    bool Take(std::string_view word) {
        if (!at_->Is(word)) return false;
        ++at_;
        return true;
    }

    double Either() {
        double value = Both();
        for (;;) {
            if (Take("or"))
                value = (Both() != 0) | (value != 0);
            else if (Take("xor"))
                value = (Both() != 0) != (value != 0);
            else
                return value;
        }
    }

    double Both() {
        double value = Compared();
        while (Take("and")) value = (Compared() != 0) & (value != 0);
        return value;
    }

    double Compared() {
        const double left = Single();
        if (Take("=")) return left == Single();
        if (Take("<>")) return left != Single();
        if (Take("<")) return left < Single();
        if (Take("<=")) return left <= Single();
        if (Take(">")) return left > Single();
        if (Take(">=")) return left >= Single();
        return left;
    }

    double Single() {
        if (++depth_ > kDeepestCondition) Fail(kConditionSays.tooDeep());
        const double value = Innermost();
        --depth_;
        return value;
    }

    double Innermost() {
        if (Take("not")) return Single() == 0;
        if (Take("(")) {
            const double value = Either();
            if (!Take(")")) Fail(kConditionSays.noBracket());
            return value;
        }
        const Token& token = *at_;
        if (EndsLine(token)) Fail(kConditionSays.noCondition());
        const std::optional<double> value = ValueOf(token);
        if (!value) {
            std::vector<std::string> names;
            for (const BuildConstant& constant : kBuildConstants) names.emplace_back(constant.name);
            Fail(kConditionSays.noConstant(token.text + host::DidYouMean(token.text, names)));
        }
        ++at_;
        return *value;
    }

    std::optional<double> ValueOf(const Token& token) const {
        if (token.kind == TokenKind::Integer) return static_cast<double>(token.number);
        if (token.kind == TokenKind::Double) return token.real;
        if (token.kind != TokenKind::Identifier) return {};
        if (token.Is("true")) return 1;
        if (token.Is("false")) return 0;
        if (const std::optional<bool> known = BuildConstantNamed(token.text)) return *known;
        const auto own = constants_.find(host::LowerName(token.text));
        return own == constants_.end() ? std::nullopt : std::optional(own->second);
    }

    const Token* at_;
    const Constants& constants_;
    int depth_ = 0;
};

struct Branches {
    const Token* opened;
    bool outer;         // what stands around it stays
    bool taken;         // one of them has held
    bool now;           // the one that is open holds
    bool last = false;  // #Else was met
};

class Filter {
  public:
    explicit Filter(Diagnostics& diagnostics) : diagnostics_(diagnostics) {}

    std::vector<Token> Run(const std::vector<Token>& tokens) {
        for (std::size_t at = 0; at < tokens.size();) {
            std::size_t end = at;
            while (!EndsLine(tokens[end])) ++end;
            if (tokens[at].kind == TokenKind::Directive) {
                ReadDirective(tokens.data() + at);
            } else if (Stays() || tokens[end].kind == TokenKind::End) {
                if (Stays()) NoteConstant(tokens.data() + at, end - at);
                kept_.insert(kept_.end(), tokens.begin() + static_cast<std::ptrdiff_t>(Stays() ? at : end),
                             tokens.begin() + static_cast<std::ptrdiff_t>(end + 1));
            }
            if (tokens[at].kind == TokenKind::Directive && tokens[end].kind == TokenKind::End)
                kept_.push_back(tokens[end]);
            at = end + 1;
        }
        for (const Branches& open : open_) Tell(*open.opened, kConditionSays.noEndIf());
        return std::move(kept_);
    }

  private:
    bool Stays() const { return open_.empty() || open_.back().now; }

    void Tell(const Token& at, const host::Said& message) { diagnostics_.Add({at.line, at.column}, message); }

    bool Evaluate(const Token* condition) {
        try {
            return Condition(condition, constants_).Holds();
        } catch (const Mistake& mistake) {
            Tell(*mistake.at, mistake.message);
            return false;
        }
    }

    void ReadDirective(const Token* at) {
        if (at->text == "#if") {
            const bool outer = Stays();
            const bool holds = outer && Evaluate(at + 1);
            open_.push_back({at, outer, holds, holds});
            return;
        }
        const bool ends = at->text == "#endif" || at->text == "#end";
        if (!ends && at->text != "#else" && at->text != "#elseif") {
            if (Stays()) Tell(*at, kConditionSays.foreignDirective(at->text));
            return;
        }
        if (open_.empty()) return Tell(*at, kConditionSays.noBeginning(at->text));
        Branches& open = open_.back();
        if (ends) {
            open_.pop_back();
            return;
        }
        if (open.last) Tell(*at, kConditionSays.afterElse(at->text));
        open.last |= at->text == "#else";
        open.now = open.outer && !open.taken && (at->text == "#else" || Evaluate(at + 1));
        open.taken |= open.now;
    }

    // "Const Name = literal"
    void NoteConstant(const Token* line, std::size_t count) {
        if (count != 4 || !line[0].Is("const") || !line[2].Is("=")) return;
        const Token& value = line[3];
        double& constant = constants_[host::LowerName(line[1].text)];
        constant = value.kind == TokenKind::Integer ? static_cast<double>(value.number) : value.real;
        if (value.kind == TokenKind::Identifier) constant = value.Is("true");
    }

    Diagnostics& diagnostics_;
    std::vector<Token> kept_;
    std::vector<Branches> open_;
    Constants constants_;
};

}  // namespace

std::vector<Token> WithoutUnusedLines(std::vector<Token> tokens, Diagnostics& diagnostics) {
    return Filter(diagnostics).Run(tokens);
}

}  // namespace script
