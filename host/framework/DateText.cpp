// Dates as text and back.
#include <array>
#include <cctype>
#include <cstdio>
#include <vector>

#include "host/framework/CivilTime.h"
#include "host/objects/Type.h"

namespace host {

namespace {

constexpr std::array<std::string_view, 12> kMonths = {"January",   "February", "March",    "April",
                                                      "May",       "June",     "July",     "August",
                                                      "September", "October",  "November", "December"};
constexpr std::array<std::string_view, 7> kDays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                   "Thursday", "Friday", "Saturday"};

// As printf with whole numbers.
template <class... Numbers>
std::string Written(const char* form, Numbers... numbers) {
    char text[64];
    std::snprintf(text, sizeof text, form, static_cast<int>(numbers)...);
    return text;
}

std::string_view MonthName(const CivilTime& time) { return kMonths[static_cast<std::size_t>(time.month) - 1]; }

std::string DayAndYear(const CivilTime& time) { return Written(" %d, %d", time.day, time.year); }

// 0 is 12 at night, 12 is 12 at noon.
std::int64_t HourOfTwelve(const CivilTime& time) { return (time.hour + 11) % 12 + 1; }

const char* Half(const CivilTime& time) { return time.hour < 12 ? " AM" : " PM"; }

// --- Reading --------------------------------------------------------------------------------

// A number, a word, or one other character; blanks only part them.
struct Token {
    std::string_view text;
    std::int64_t number = -1;  // of a number of up to four digits

    bool IsNumber() const { return number >= 0; }
};

template <class Of>
std::size_t RunLength(std::string_view text, const Of& of) {
    std::size_t length = 0;
    while (length < text.size() && of(static_cast<unsigned char>(text[length]))) ++length;
    return length;
}

std::vector<Token> TokensOf(std::string_view text) {
    constexpr std::size_t kMostTokens = 16;
    std::vector<Token> tokens;
    while (!text.empty() && tokens.size() < kMostTokens) {
        const std::size_t digits = RunLength(text, [](int c) { return std::isdigit(c); });
        const std::size_t letters = RunLength(text, [](int c) { return std::isalpha(c); });
        Token token{text.substr(0, std::max({digits, letters, std::size_t{1}}))};
        if (digits > 0 && digits <= 4) token.number = std::stoi(std::string(token.text));
        if (token.text != " " && token.text != ",") tokens.push_back(token);
        text.remove_prefix(token.text.size());
    }
    return tokens;
}

class Reader {
  public:
    explicit Reader(std::string_view text) : tokens_(TokensOf(text)) {}

    std::optional<CivilTime> Read() {
        const bool read = ReadDay() && (AtEnd() || ReadTime()) && AtEnd() && IsSound(time_) && time_.year > 0;
        return read ? std::optional(time_) : std::nullopt;
    }

  private:
    bool AtEnd() const { return at_ == tokens_.size(); }

    bool TakeNumber(std::int64_t& number) {
        if (AtEnd() || !tokens_[at_].IsNumber()) return false;
        number = tokens_[at_++].number;
        return true;
    }

    bool Take(std::string_view text) {
        if (AtEnd() || !SameName(tokens_[at_].text, text)) return false;
        ++at_;
        return true;
    }

    // A full name, or its first three letters and more, with or without a dot.
    bool TakeMonth() {
        constexpr std::size_t kShortest = 3;
        if (AtEnd() || tokens_[at_].text.size() < kShortest) return false;
        const std::string_view word = tokens_[at_].text;
        for (std::size_t i = 0; i < kMonths.size(); ++i) {
            if (!SameName(kMonths[i].substr(0, word.size()), word)) continue;
            time_.month = static_cast<std::int64_t>(i) + 1;
            ++at_;
            Take(".");
            return true;
        }
        return false;
    }

    bool TakeYear() {
        constexpr std::int64_t kPivot = 69;
        const bool two = !AtEnd() && tokens_[at_].text.size() <= 2;
        if (!TakeNumber(time_.year)) return false;
        if (two) time_.year += time_.year < kPivot ? 2000 : 1900;
        return true;
    }

    bool ReadDay() {
        if (TakeMonth()) return TakeNumber(time_.day) && TakeYear();
        if (AtEnd() || !tokens_[at_].IsNumber()) return false;
        const bool yearFirst = tokens_[at_].text.size() == 4;
        std::int64_t first = 0;
        TakeNumber(first);
        if (yearFirst) {
            time_.year = first;
            return Take("-") && TakeNumber(time_.month) && Take("-") && TakeNumber(time_.day);
        }
        time_.month = time_.day = first;
        if (Take("/")) return TakeNumber(time_.day) && Take("/") && TakeYear();
        if (Take(".") && TakeNumber(time_.month)) return Take(".") && TakeYear();
        return TakeMonth() && TakeYear();
    }

    bool ReadTime() {
        if (!TakeNumber(time_.hour) || !Take(":") || !TakeNumber(time_.minute)) return false;
        if (Take(":") && !TakeNumber(time_.second)) return false;
        const bool am = Take("AM"), pm = !am && Take("PM");
        if (!am && !pm) return true;
        if (time_.hour < 1 || time_.hour > 12) return false;
        time_.hour = time_.hour % 12 + (pm ? 12 : 0);
        return true;
    }

    std::vector<Token> tokens_;
    std::size_t at_ = 0;
    CivilTime time_;
};

// Whether the text is digits where the form has a 0, and else the form's characters.
bool HasForm(std::string_view text, std::string_view form) {
    if (text.size() != form.size()) return false;
    for (std::size_t i = 0; i < form.size(); ++i)
        if (form[i] == '0' ? !std::isdigit(static_cast<unsigned char>(text[i])) : text[i] != form[i]) return false;
    return true;
}

}  // namespace

std::string SqlDate(const CivilTime& time) { return Written("%04d-%02d-%02d", time.year, time.month, time.day); }

std::string SqlDateTime(const CivilTime& time) {
    return SqlDate(time) + Written(" %02d:%02d:%02d", time.hour, time.minute, time.second);
}

std::string ShortDate(const CivilTime& time) { return Written("%d/%d/%d", time.month, time.day, time.year); }

std::string AbbreviatedDate(const CivilTime& time) {
    return std::string(MonthName(time).substr(0, 3)) + DayAndYear(time);
}

std::string LongDate(const CivilTime& time) {
    const std::string_view day = kDays[static_cast<std::size_t>(DayOfWeek(time)) - 1];
    return std::string(day) + ", " + std::string(MonthName(time)) + DayAndYear(time);
}

std::string ShortTime(const CivilTime& time) {
    return Written("%d:%02d", HourOfTwelve(time), time.minute) + Half(time);
}

std::string LongTime(const CivilTime& time) {
    return Written("%d:%02d:%02d", HourOfTwelve(time), time.minute, time.second) + Half(time);
}

std::optional<CivilTime> ReadSqlDate(std::string_view text, bool withTime) {
    if (!HasForm(text, withTime ? "0000-00-00 00:00:00" : "0000-00-00")) return std::nullopt;
    return Reader(text).Read();
}

std::optional<CivilTime> ReadDate(std::string_view text) { return Reader(text).Read(); }

}  // namespace host
