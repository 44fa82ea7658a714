// The settings file in memory: a .reg text ("REGEDIT4" or "Windows Registry
// Editor Version 5.00") as sections of lines. Every line the parser does not
// understand, comments and blank lines included, is kept as it stood and
// written back unchanged, so that saving a hand-edited or damaged file loses
// nothing; only the values that are set are rewritten.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tollan::platform::posix {

// A key's identity: its root (0..3 as RootKey numbers them) and its path
// below the root, components joined by '\', without empty components.
struct SettingsKeyPath {
    uint32_t root;
    std::string path;
};

struct SettingsValue {
    std::string name;  // "" is the key's default value (@)
    uint32_t type;
    std::string data;  // the stored bytes; strings with their terminating zero
};

class SettingsDocument {
public:
    // Reads the text of a settings file; never fails (what is not understood
    // is kept as text).
    static SettingsDocument parse(std::string_view text);
    std::string serialize() const;

    // True when the key, or any key below it, has a section.
    bool keyExists(const SettingsKeyPath &key) const;
    // The value as the registry would show it (a later line wins over an
    // earlier one of the same name); null when there is none.
    const SettingsValue *findValue(const SettingsKeyPath &key, std::string_view name) const;
    // Adds a section for the key when it has none.
    void createKey(const SettingsKeyPath &key);
    void setValue(const SettingsKeyPath &key, const SettingsValue &value);

private:
    struct Line {
        std::string text;  // as read; rewritten from `value` when `edited`
        bool isValue = false;
        bool edited = false;
        SettingsValue value;
    };
    struct Section {
        std::string header;   // the "[...]" line as read
        bool usable = false;  // false for key deletions and unreadable headers
        SettingsKeyPath key;
        std::vector<Line> lines;
    };

    Section *lastSectionOf(const SettingsKeyPath &key);

    std::vector<Line> preamble_;
    std::vector<Section> sections_;
};

// Parses "HKEY_CURRENT_USER\Software\..." (or "HKCU\..."); false for an
// unknown root.
bool parseKeyPath(std::string_view text, SettingsKeyPath *key);
// "HKEY_CURRENT_USER\Software\..." for a key.
std::string keyPathText(const SettingsKeyPath &key);
// Joins the components of `path` with single '\' and drops empty ones.
std::string normaliseKeyPath(std::string_view path);

}  // namespace tollan::platform::posix
