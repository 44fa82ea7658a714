#include "platform/posix/settings_document.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace tollan::platform::posix {

namespace {

constexpr uint32_t kTypeString = 1;
constexpr uint32_t kTypeBinary = 3;
constexpr uint32_t kTypeDword = 4;
constexpr std::string_view kHeader5 = "Windows Registry Editor Version 5.00";
constexpr std::string_view kHeader4 = "REGEDIT4";

struct RootName {
    std::string_view full, abbreviation;
};
constexpr RootName kRootNames[] = {{"HKEY_CLASSES_ROOT", "HKCR"},
                                   {"HKEY_LOCAL_MACHINE", "HKLM"},
                                   {"HKEY_CURRENT_USER", "HKCU"},
                                   {"HKEY_USERS", "HKU"}};

char lower(char c)
{
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

bool equalNoCase(std::string_view a, std::string_view b)
{
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (lower(a[i]) != lower(b[i])) return false;
    return true;
}

bool startsWithNoCase(std::string_view text, std::string_view prefix)
{
    return text.size() >= prefix.size() && equalNoCase(text.substr(0, prefix.size()), prefix);
}

std::string_view trim(std::string_view text)
{
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front()))) text.remove_prefix(1);
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) text.remove_suffix(1);
    return text;
}

bool sameKey(const SettingsKeyPath &a, const SettingsKeyPath &b)
{
    return a.root == b.root && equalNoCase(a.path, b.path);
}

bool isAtOrBelow(const SettingsKeyPath &candidate, const SettingsKeyPath &key)
{
    if (candidate.root != key.root) return false;
    if (key.path.empty() || sameKey(candidate, key)) return true;
    return candidate.path.size() > key.path.size() && candidate.path[key.path.size()] == '\\' &&
           startsWithNoCase(candidate.path, key.path);
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    c = lower(c);
    return (c >= 'a' && c <= 'f') ? c - 'a' + 10 : -1;
}

// Reads a quoted text at text[*pos] with the \\ and \" escapes; *pos ends
// behind the closing quote.
bool parseQuoted(std::string_view text, size_t *pos, std::string *out)
{
    if (*pos >= text.size() || text[*pos] != '"') return false;
    for (size_t i = *pos + 1; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '"') {
            *pos = i + 1;
            return true;
        }
        if (c == '\\' && i + 1 < text.size() && (text[i + 1] == '\\' || text[i + 1] == '"')) ++i;
        out->push_back(text[i]);
    }
    return false;
}

bool parseNumber(std::string_view digits, uint32_t *value)
{
    if (digits.empty() || digits.size() > 8) return false;
    uint32_t number = 0;
    for (char c : digits) {
        const int digit = hexDigit(c);
        if (digit < 0) return false;
        number = number * 16 + static_cast<uint32_t>(digit);
    }
    *value = number;
    return true;
}

// "xx,xx,..." with line continuations ("\" at the end of a line) and spaces.
bool parseHexBytes(std::string_view text, std::string *bytes)
{
    std::string cleaned;
    for (char c : text)
        if (c != '\\' && !std::isspace(static_cast<unsigned char>(c))) cleaned.push_back(c);
    if (cleaned.empty()) return true;
    const std::string_view digits = cleaned;
    size_t start = 0;
    for (;;) {
        const size_t comma = std::min(digits.find(',', start), digits.size());
        uint32_t byte = 0;
        if (comma - start > 2 || !parseNumber(digits.substr(start, comma - start), &byte)) return false;
        bytes->push_back(static_cast<char>(byte));
        if (comma == digits.size()) return true;
        start = comma + 1;
    }
}

bool parseData(std::string_view text, SettingsValue *value)
{
    if (!text.empty() && text.front() == '"') {
        size_t pos = 0;
        std::string content;
        if (!parseQuoted(text, &pos, &content) || !trim(text.substr(pos)).empty()) return false;
        value->type = kTypeString;
        value->data = content + '\0';
        return true;
    }
    if (startsWithNoCase(text, "dword:")) {
        uint32_t number = 0;
        if (!parseNumber(trim(text.substr(6)), &number)) return false;
        value->type = kTypeDword;
        value->data.clear();
        for (int shift = 0; shift < 32; shift += 8) value->data.push_back(static_cast<char>(number >> shift));
        return true;
    }
    if (startsWithNoCase(text, "hex:")) {
        value->type = kTypeBinary;
        return parseHexBytes(text.substr(4), &value->data);
    }
    if (startsWithNoCase(text, "hex(")) {
        const size_t close = text.find("):");
        if (close == std::string_view::npos || !parseNumber(text.substr(4, close - 4), &value->type))
            return false;
        return parseHexBytes(text.substr(close + 2), &value->data);
    }
    return false;  // "-" (a deletion) or something unknown
}

bool parseValueLine(std::string_view text, SettingsValue *value)
{
    size_t pos = 0;
    value->name.clear();
    if (text.front() == '@') {
        pos = 1;
    } else if (!parseQuoted(text, &pos, &value->name)) {
        return false;
    }
    const std::string_view rest = trim(text.substr(pos));
    if (rest.empty() || rest.front() != '=') return false;
    return parseData(trim(rest.substr(1)), value);
}

void appendQuoted(std::string *out, std::string_view text)
{
    out->push_back('"');
    for (char c : text) {
        if (c == '\\' || c == '"') out->push_back('\\');
        out->push_back(c);
    }
    out->push_back('"');
}

std::string formatValue(const SettingsValue &value)
{
    std::string line;
    if (value.name.empty())
        line.push_back('@');
    else
        appendQuoted(&line, value.name);
    line += '=';

    const std::string_view data = value.data;
    const bool plainString = value.type == kTypeString && !data.empty() && data.back() == '\0' &&
                             data.substr(0, data.size() - 1).find_first_of(std::string_view("\0\r\n", 3)) ==
                                 std::string_view::npos;
    char number[32];
    if (plainString) {
        appendQuoted(&line, data.substr(0, data.size() - 1));
    } else if (value.type == kTypeDword && data.size() == 4) {
        uint32_t dword = 0;
        for (int i = 3; i >= 0; --i)
            dword = dword << 8 | static_cast<unsigned char>(data[static_cast<size_t>(i)]);
        std::snprintf(number, sizeof number, "dword:%08x", dword);
        line += number;
    } else {
        if (value.type == kTypeBinary) {
            line += "hex:";
        } else {
            std::snprintf(number, sizeof number, "hex(%x):", value.type);
            line += number;
        }
        for (size_t i = 0; i < data.size(); ++i) {
            std::snprintf(number, sizeof number, i ? ",%02x" : "%02x", static_cast<unsigned char>(data[i]));
            line += number;
        }
    }
    return line;
}

bool isHeaderLine(std::string_view text)
{
    const std::string_view trimmed = trim(text);
    return trimmed == kHeader5 || trimmed == kHeader4;
}

// A hex value whose line ends in "\" continues on the next line.
bool continuesOnNextLine(std::string_view line)
{
    const std::string_view trimmed = trim(line);
    return !trimmed.empty() && trimmed.back() == '\\' && (trimmed.front() == '"' || trimmed.front() == '@') &&
           trimmed.find("=hex") != std::string_view::npos;
}

}  // namespace

std::string normaliseKeyPath(std::string_view path)
{
    std::string normal;
    size_t start = 0;
    while (start <= path.size()) {
        size_t end = path.find('\\', start);
        if (end == std::string_view::npos) end = path.size();
        if (end > start) {
            if (!normal.empty()) normal += '\\';
            normal.append(path.substr(start, end - start));
        }
        start = end + 1;
    }
    return normal;
}

bool parseKeyPath(std::string_view text, SettingsKeyPath *key)
{
    const size_t separator = text.find('\\');
    const std::string_view rootName = text.substr(0, separator);
    for (uint32_t root = 0; root < 4; ++root) {
        if (equalNoCase(rootName, kRootNames[root].full) ||
            equalNoCase(rootName, kRootNames[root].abbreviation)) {
            key->root = root;
            key->path = separator == std::string_view::npos ? "" : normaliseKeyPath(text.substr(separator));
            return true;
        }
    }
    return false;
}

std::string keyPathText(const SettingsKeyPath &key)
{
    std::string text(kRootNames[key.root & 3].full);
    if (!key.path.empty()) text += '\\' + key.path;
    return text;
}

SettingsDocument SettingsDocument::parse(std::string_view text)
{
    if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);
    SettingsDocument document;
    std::vector<Line> *lines = &document.preamble_;
    size_t start = 0;
    while (start < text.size()) {
        Line line;
        do {
            size_t end = text.find('\n', start);
            if (end == std::string_view::npos) end = text.size();
            std::string_view physical = text.substr(start, end - start);
            if (!physical.empty() && physical.back() == '\r') physical.remove_suffix(1);
            if (!line.text.empty()) line.text += '\n';
            line.text.append(physical);
            start = end + 1;
        } while (start < text.size() && continuesOnNextLine(line.text));

        const std::string_view trimmed = trim(line.text);
        if (!trimmed.empty() && trimmed.front() == '[') {
            Section section;
            section.header = line.text;
            section.usable = trimmed.back() == ']' && trimmed.size() > 2 && trimmed[1] != '-' &&
                             parseKeyPath(trimmed.substr(1, trimmed.size() - 2), &section.key);
            document.sections_.push_back(std::move(section));
            lines = &document.sections_.back().lines;
            continue;
        }
        if (!trimmed.empty() && (trimmed.front() == '"' || trimmed.front() == '@'))
            line.isValue = parseValueLine(trimmed, &line.value);
        lines->push_back(std::move(line));
    }
    return document;
}

std::string SettingsDocument::serialize() const
{
    std::string text;
    bool hasHeader = false;
    for (const Line &line : preamble_) {
        if (isHeaderLine(line.text)) hasHeader = true;
        if (!trim(line.text).empty()) break;
    }
    if (!hasHeader) {
        text += kHeader5;
        text += "\n\n";
    }
    const auto appendLines = [&text](const std::vector<Line> &lines) {
        for (const Line &line : lines) {
            text += line.edited ? formatValue(line.value) : line.text;
            text += '\n';
        }
    };
    appendLines(preamble_);
    for (const Section &section : sections_) {
        text += section.header;
        text += '\n';
        appendLines(section.lines);
    }
    return text;
}

bool SettingsDocument::keyExists(const SettingsKeyPath &key) const
{
    for (const Section &section : sections_)
        if (section.usable && isAtOrBelow(section.key, key)) return true;
    return false;
}

const SettingsValue *SettingsDocument::findValue(const SettingsKeyPath &key, std::string_view name) const
{
    const SettingsValue *found = nullptr;
    for (const Section &section : sections_) {
        if (!section.usable || !sameKey(section.key, key)) continue;
        for (const Line &line : section.lines)
            if (line.isValue && equalNoCase(line.value.name, name)) found = &line.value;
    }
    return found;
}

SettingsDocument::Section *SettingsDocument::lastSectionOf(const SettingsKeyPath &key)
{
    Section *last = nullptr;
    for (Section &section : sections_)
        if (section.usable && sameKey(section.key, key)) last = &section;
    return last;
}

void SettingsDocument::createKey(const SettingsKeyPath &key)
{
    if (lastSectionOf(key)) return;
    std::vector<Line> &before = sections_.empty() ? preamble_ : sections_.back().lines;
    if (!before.empty() && !trim(before.back().text).empty()) before.push_back(Line{});
    Section section;
    section.key = SettingsKeyPath{key.root, normaliseKeyPath(key.path)};
    section.header = '[' + keyPathText(section.key) + ']';
    section.usable = true;
    sections_.push_back(std::move(section));
}

void SettingsDocument::setValue(const SettingsKeyPath &key, const SettingsValue &value)
{
    bool replaced = false;
    for (Section &section : sections_) {
        if (!section.usable || !sameKey(section.key, key)) continue;
        for (Line &line : section.lines) {
            if (line.isValue && equalNoCase(line.value.name, value.name)) {
                line.value = value;
                line.edited = true;
                replaced = true;
            }
        }
    }
    if (replaced) return;
    createKey(key);
    std::vector<Line> &lines = lastSectionOf(key)->lines;
    size_t position = 0;  // behind the section's last value, ahead of blank lines and comments
    for (size_t i = 0; i < lines.size(); ++i)
        if (lines[i].isValue) position = i + 1;
    Line line;
    line.isValue = true;
    line.edited = true;
    line.value = value;
    lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(position), std::move(line));
}

}  // namespace tollan::platform::posix
