#include "platform/simulated/scenario/document.h"

#include <algorithm>
#include <set>
#include <vector>

#include "text/characters.h"

namespace quil::simulated {
namespace {

/// The parser's message without its own position and error number.
std::string reason(const std::string& message) {
    constexpr std::string_view kDigits = "0123456789: ";
    for (const std::string_view mark : {"column ", "] "}) {
        std::size_t start = message.find(mark);
        if (start == message.npos) continue;
        start += mark.size();
        while (start < message.size() && kDigits.find(message[start]) != kDigits.npos) {
            ++start;
        }
        return validUtf8(std::string_view(message).substr(start));
    }
    return validUtf8(message);
}

std::string lineAndColumn(std::string_view text, std::size_t offset) {
    const std::string_view before = text.substr(0, offset);
    const auto line = std::ranges::count(before, '\n') + 1;
    const std::size_t lineStart = before.rfind('\n') + 1;  // npos + 1 is 0
    return std::to_string(line) + ':' + std::to_string(before.size() - lineStart + 1);
}

/// Reads the text once without keeping it, for what the parser itself lets pass.
class Checker : public Json::json_sax_t {
  public:
    explicit Checker(std::string_view text) : text_(text) {}

    bool null() override { return begin(); }
    bool boolean(bool) override { return begin(); }
    bool number_integer(number_integer_t) override { return begin(); }
    bool number_unsigned(number_unsigned_t) override { return begin(); }
    bool number_float(number_float_t, const string_t&) override { return begin(); }
    bool string(string_t&) override { return begin(); }
    bool binary(binary_t&) override { return begin(); }

    bool start_object(std::size_t) override { return open(true); }
    bool start_array(std::size_t) override { return open(false); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }

    bool key(string_t& name) override {
        Level& level = levels_.back();
        level.key = name;
        if (level.keys.insert(name).second) return true;
        throw ScenarioError(path() + ": given twice");
    }

    bool parse_error(std::size_t position, const std::string&,
                     const nlohmann::detail::exception& error) override {
        const std::size_t offset = position > 0 ? position - 1 : 0;
        throw ScenarioError(lineAndColumn(text_, std::min(offset, text_.size())) + ": " +
                            reason(error.what()));
    }

  private:
    struct Level {
        bool isObject = false;
        std::set<std::string> keys;
        std::string key;
        std::size_t count = 0;  // of a list's entries that have begun
    };

    bool begin() {
        if (!levels_.empty()) ++levels_.back().count;
        return true;
    }

    bool open(bool isObject) {
        begin();
        if (levels_.size() == kMaximumScenarioDepth) {
            throw ScenarioError("nested more than " + std::to_string(kMaximumScenarioDepth) +
                                " levels deep");
        }
        levels_.push_back({.isObject = isObject, .keys = {}, .key = {}, .count = 0});
        return true;
    }

    bool close() {
        levels_.pop_back();
        return true;
    }

    std::string path() const {
        std::string result;
        for (const Level& level : levels_) {
            if (level.isObject) {
                result += (result.empty() ? "" : ".") + level.key;
            } else {
                result += '[' + std::to_string(level.count - 1) + ']';
            }
        }
        return result;
    }

    const std::string_view text_;
    std::vector<Level> levels_;
};

}  // namespace

Json parseDocument(std::string_view text) {
    // The parser takes a NUL for the end of the text, whatever comes behind it.
    if (const std::size_t end = text.find('\0'); end != text.npos) {
        throw ScenarioError(lineAndColumn(text, end) + ": a NUL byte is no JSON");
    }
    Checker checker(text);
    Json::sax_parse(text, &checker);
    return Json::parse(text);
}

}  // namespace quil::simulated
