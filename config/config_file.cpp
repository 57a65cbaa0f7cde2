#include "config/config_file.h"

#include <cfloat>
#include <charconv>
#include <iterator>
#include <string_view>

#include "platform/atomic_file.h"
#include "platform/line_reader.h"

namespace {

constexpr std::string_view kHeader = "[Veskor 1.9]";
constexpr std::string_view kRepairTitle = "Veskor Repair Tool";

// How a line's value is taken: a switch looks at the line's last character only, a
// list position at all the text after the key.
enum class ValueFrom { LastCharacter, RestOfLine };

struct Setting {
    std::string_view key;
    double Options::*field;
    ValueFrom from;
};

// In the order the file is written.
constexpr Setting kSettings[] = {
    {"Create00index=", &Options::optionsCreate00index, ValueFrom::LastCharacter},
    {"CreateExpDescNonNTFS=", &Options::optionsCreateExpDescNonNTFS, ValueFrom::LastCharacter},
    {"DefaultGUIFont=", &Options::optionsDefaultGUIFont, ValueFrom::RestOfLine},
    {"DefaultGUIFontSize=", &Options::optionsDefaultGUIFontSize, ValueFrom::RestOfLine},
    {"HighDPIGUIAdjust=", &Options::optionsHighDPIGUIAdjust, ValueFrom::LastCharacter},
    {"AutoCreateExpDesc=", &Options::optionsAutoCreateExpDesc, ValueFrom::LastCharacter},
    {"BgColor=", &Options::optionsBgColor, ValueFrom::RestOfLine},
};

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// The longest prefix of `text` that reads as digits, a "." and more digits.
std::size_t numberLength(std::string_view text) {
    std::size_t n = 0;
    while (n < text.size() && isDigit(text[n]))
        ++n;
    if (n < text.size() && text[n] == '.') {
        ++n;
        while (n < text.size() && isDigit(text[n]))
            ++n;
    }
    return n;
}

// A number too large for a double stands for the largest one; a fraction too small,
// for 0. Neither can come from the program's own writing.
double outOfRangeValue(std::string_view digits) {
    bool large = digits.find_first_of("123456789") < digits.find('.');
    return large ? DBL_MAX : 0;
}

// The number written at the start of a text: blanks skipped, an optional sign,
// digits, "." and fraction digits; reading stops at the first character that cannot
// continue the number. A text that does not start with a number reads as 0.
double numericValue(std::string_view text) {
    std::size_t start = text.find_first_not_of(" \t");
    if (start == std::string_view::npos)
        return 0;
    text.remove_prefix(start);
    bool negative = !text.empty() && text.front() == '-';
    if (!text.empty() && (text.front() == '-' || text.front() == '+'))
        text.remove_prefix(1);
    std::string_view digits = text.substr(0, numberLength(text));
    if (digits.empty() || digits == ".")
        return 0;
    double value = 0;
    auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), value,
                                     std::chars_format::fixed);
    if (ec == std::errc::result_out_of_range)
        value = outOfRangeValue(digits);
    return negative ? -value : value;
}

// Plain decimal: whole numbers without a fraction, no exponent, no blanks.
std::string formatValue(double value) {
    if (value == 0)
        return "0";  // never "-0"
    char buffer[DBL_MAX_10_EXP + 64];
    auto [end, ec] =
        std::to_chars(std::begin(buffer), std::end(buffer), value, std::chars_format::fixed);
    return ec == std::errc() ? std::string(std::begin(buffer), end) : "0";
}

enum class HeaderSearch { Found, Missing, ReadFailed };

HeaderSearch findHeader(LineReader& reader) {
    std::string line;
    while (reader.next(line)) {
        if (line == kHeader)
            return HeaderSearch::Found;
    }
    return reader.error() ? HeaderSearch::ReadFailed : HeaderSearch::Missing;
}

void applyLine(std::string_view line, Options& options) {
    for (const Setting& setting : kSettings) {
        if (!line.starts_with(setting.key))
            continue;
        std::string_view text = setting.from == ValueFrom::LastCharacter
                                    ? line.substr(line.size() - 1)
                                    : line.substr(setting.key.size());
        options.*setting.field = numericValue(text);
        return;
    }
}

// Reads the settings after the header. False when the file cannot be read.
bool readSettings(LineReader& reader, Options& options) {
    std::string line;
    while (reader.next(line))
        applyLine(line, options);
    return !reader.error();
}

bool writeConfigFile(const std::string& configFile, const Options& options) {
    std::string text = std::string(kHeader) + "\r\n";
    for (const Setting& setting : kSettings)
        text += std::string(setting.key) + formatValue(options.*setting.field) + "\r\n";
    return !replacePrivateFileAtomically(configFile, text);
}

ConfigResult cannotProcess(Prompter& prompter) {
    prompter.message("Error: Cannot process the configuration settings file.  Permissions issue?",
                     kRepairTitle, Buttons::Ok, Icon::Critical);
    return ConfigResult::EndProgram;
}

}  // namespace

void createConfigFile(const std::string& configFile, const Options& options, Prompter& prompter) {
    if (!writeConfigFile(configFile, options))
        prompter.message(
            "Error: Cannot re-create the configuration settings file.  Permissions issue?",
            kRepairTitle, Buttons::Ok, Icon::Critical);
}

ConfigResult processConfigFile(const std::string& configFile, Options& options,
                               Prompter& prompter) {
    // The file is re-created at most once: when that fails and the old file still has
    // no header, the settings stay as they are (the defaults) and the run goes on.
    for (int attempt = 0; attempt < 2; ++attempt) {
        LineReader reader(configFile);
        switch (findHeader(reader)) {
            case HeaderSearch::Found:
                return readSettings(reader, options) ? ConfigResult::Read : cannotProcess(prompter);
            case HeaderSearch::ReadFailed:
                return cannotProcess(prompter);
            case HeaderSearch::Missing:
                if (attempt == 0)
                    createConfigFile(configFile, options, prompter);
                break;
        }
    }
    return ConfigResult::Read;
}
