// Results as lines of text, as JSON and as JUnit's XML.
#include "host/check/Report.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace host {

namespace {

using Json = nlohmann::ordered_json;

std::array<std::int64_t, kCheckStatusCount> CountsOf(std::span<const CheckResult> results) {
    std::array<std::int64_t, kCheckStatusCount> counts{};
    for (const CheckResult& result : results) ++counts[static_cast<std::size_t>(result.status)];
    return counts;
}

std::int64_t CountOf(std::span<const CheckResult> results, CheckStatus status) {
    return CountsOf(results)[static_cast<std::size_t>(status)];
}

std::string Padded(std::string text, std::size_t width) {
    text.append(text.size() < width ? width - text.size() : 1, ' ');
    return text;
}

// --- XML -----------------------------------------------------------------------------------------------

// As JSON has it: what is no text becomes U+FFFD.
std::string AsText(const std::string& bytes) {
    return Json::parse(Json(bytes).dump(-1, ' ', false, Json::error_handler_t::replace)).get<std::string>();
}

// Control characters have no place in XML, not even escaped.
std::string Escaped(const std::string& bytes) {
    std::string escaped;
    for (const char character : AsText(bytes)) {
        if (character == '&')
            escaped += "&amp;";
        else if (character == '<')
            escaped += "&lt;";
        else if (character == '>')
            escaped += "&gt;";
        else if (character == '"')
            escaped += "&quot;";
        else if (character == '\n' || character == '\t')
            escaped += character == '\n' ? "&#10;" : "&#9;";
        else
            escaped += static_cast<unsigned char>(character) < ' ' ? '?' : character;
    }
    return escaped;
}

std::string Attribute(const char* name, const std::string& value) {
    return std::string(" ") + name + "=\"" + Escaped(value) + '"';
}

std::string Seconds(double seconds) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.3f", seconds);
    return text;
}

std::string Element(const char* name, const CheckResult& result) {
    return std::string("<") + name + Attribute("message", result.detail) +
           Attribute("type", std::string(StatusName(result.status))) + '>' + Escaped(result.script) + "</" + name + '>';
}

std::string ContentOf(const CheckResult& result) {
    switch (result.status) {
        case CheckStatus::Fail:
            return Element("failure", result);
        case CheckStatus::Crash:
        case CheckStatus::Timeout:
            return Element("error", result);
        case CheckStatus::Skip:
            return "<skipped" + Attribute("message", result.detail) + "/>";
        default:
            return "<system-out>" + Escaped(result.detail + (result.script.empty() ? "" : "\n" + result.script)) +
                   "</system-out>";
    }
}

}  // namespace

std::string CheckLine(const CheckResult& result) {
    constexpr std::size_t kStatusWidth = 9, kIdWidth = 18;
    std::string line = Padded(std::string(StatusName(result.status)), kStatusWidth) + Padded(result.id, kIdWidth) +
                       result.detail + "\n";
    for (std::size_t at = 0; at < result.script.size();) {
        const std::size_t end = result.script.find('\n', at);
        line += "            " + result.script.substr(at, end - at) + "\n";
        at = end == std::string::npos ? result.script.size() : end + 1;
    }
    return line;
}

std::string CheckSummary(std::span<const CheckResult> results) {
    const auto counts = CountsOf(results);
    std::string text = std::to_string(results.size()) + (results.size() == 1 ? " check:" : " checks:");
    for (std::size_t i = 0; i < counts.size(); ++i)
        text += (i == 0 ? " " : ", ") + std::to_string(counts[i]) + " " +
                std::string(StatusName(static_cast<CheckStatus>(i)));
    return text + "\n";
}

std::string ChecksAsJson(const std::string& plugin, std::uint64_t seed, std::span<const CheckResult> results) {
    Json json = {{"plugin", plugin}, {"seed", seed}, {"checks", Json::array()}, {"counts", Json::object()}};
    for (const CheckResult& result : results)
        json["checks"].push_back({{"id", result.id},
                                  {"sentence", result.sentence},
                                  {"status", StatusName(result.status)},
                                  {"cases", result.cases},
                                  {"seconds", result.seconds},
                                  {"detail", result.detail},
                                  {"script", result.script.empty() ? Json() : Json(result.script)}});
    const auto counts = CountsOf(results);
    for (std::size_t i = 0; i < counts.size(); ++i)
        json["counts"][std::string(StatusName(static_cast<CheckStatus>(i)))] = counts[i];
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string ChecksAsJUnit(const std::string& plugin, std::uint64_t seed, std::span<const CheckResult> results) {
    double seconds = 0;
    for (const CheckResult& result : results) seconds += result.seconds;
    const std::int64_t errors = CountOf(results, CheckStatus::Crash) + CountOf(results, CheckStatus::Timeout);
    const std::string totals = Attribute("tests", std::to_string(results.size())) +
                               Attribute("failures", std::to_string(CountOf(results, CheckStatus::Fail))) +
                               Attribute("errors", std::to_string(errors)) +
                               Attribute("skipped", std::to_string(CountOf(results, CheckStatus::Skip))) +
                               Attribute("time", Seconds(seconds));
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" + totals + ">\n<testsuite" +
                      Attribute("name", "tqx check") + totals + ">\n<properties><property" +
                      Attribute("name", "plugin") + Attribute("value", plugin) + "/><property" +
                      Attribute("name", "seed") + Attribute("value", std::to_string(seed)) + "/></properties>\n";
    for (const CheckResult& result : results)
        xml += "<testcase" + Attribute("classname", "tqx.check") + Attribute("name", result.id) +
               Attribute("time", Seconds(result.seconds)) + '>' + ContentOf(result) + "</testcase>\n";
    return xml + "</testsuite>\n</testsuites>\n";
}

}  // namespace host
