// The old-style (OpenStep) property-list reader, tried on text that is not
// XML: { key = value; }, ( a, b ), <hex bytes>, quoted and bare strings,
// comments, and ".strings" files (key = value; pairs without braces).
// Everything it reads is a string, data, an array or a dictionary.
#include "CFPropertyListInternal.h"
#include "CFStringEncodingTables.h"
#include "CFStringInternal.h"

#include <CoreFoundation/CFDictionary.h>

#include <cstdarg>
#include <cstdio>

namespace halvane::detail {

namespace {

inline bool isBareStringCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '$' ||
           c == '/' || c == ':' || c == '.' || c == '-';
}

inline int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

class OpenStepReader {
public:
    OpenStepReader(const char* text, size_t length, PropertyListBuilder& builder, ParseError& error)
        : begin_(text), p_(text), end_(text + length), builder_(builder), error_(error) {}

    bool run() {
        skipSpaceAndComments();
        if (p_ == end_) {
            // Nothing but whitespace: an empty dictionary, always mutable.
            return builder_.push(CFDictionaryCreateMutable(builder_.allocator(), 0, &kCFTypeDictionaryKeyCallBacks,
                                                           &kCFTypeDictionaryValueCallBacks));
        }
        bool topIsString = *p_ == '"' || *p_ == '\'' || isBareStringCharacter(*p_);
        if (!parseObject()) return false;
        skipSpaceAndComments();
        if (p_ == end_) return true;
        if (!topIsString) return fail("Junk after plist at line %zu", lineAt(p_));
        // A string followed by more text: the whole text is a ".strings"
        // file, key = value; pairs without braces.
        CFRelease(builder_.take());
        p_ = begin_;
        return parseDictionaryBody(false, 1);
    }

private:
    [[gnu::format(printf, 2, 3)]] bool fail(const char* format, ...) {
        char text[256];
        std::va_list arguments;
        va_start(arguments, format);
        int needed = std::vsnprintf(text, sizeof text, format, arguments);
        va_end(arguments);
        error_.message.assign(text, needed < 0 ? 0 : std::min(size_t(needed), sizeof text - 1));
        return false;
    }

    size_t lineAt(const char* p) const { return 1 + countLineBreaks(begin_, p); }

    bool failUnexpected() { return fail("Unexpected character '0x%02x' at line %zu", unsigned(uint8_t(*p_)), lineAt(p_)); }

    void skipSpaceAndComments() {
        while (p_ < end_) {
            char c = *p_;
            if (c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v') {
                ++p_;
            } else if (c == '/' && p_ + 1 < end_ && p_[1] == '/') {
                while (p_ < end_ && *p_ != '\n' && *p_ != '\r') ++p_;
            } else if (c == '/' && p_ + 1 < end_ && p_[1] == '*') {
                const char* close = p_ + 2;
                while (close + 1 < end_ && !(close[0] == '*' && close[1] == '/')) ++close;
                p_ = close + 1 < end_ ? close + 2 : end_;
            } else {
                return;
            }
        }
    }

    bool parseObject() {
        skipSpaceAndComments();
        if (p_ == end_) return fail("Unexpected EOF while parsing plist");
        char c = *p_;
        if (c == '{' || c == '(') {
            if (depth_ == kPropertyListMaxNesting) {
                return fail("Too many nested arrays or dictionaries, failing on line %zu", lineAt(p_));
            }
            ++depth_;
            size_t line = lineAt(p_);
            ++p_;
            bool parsed = c == '{' ? parseDictionaryBody(true, line) : parseArrayBody(line);
            --depth_;
            return parsed;
        }
        if (c == '<') return parseData();
        if (c == '"' || c == '\'' || isBareStringCharacter(c)) return parseString(false);
        return failUnexpected();
    }

    bool parseString(bool isKey) {
        if (*p_ == '"' || *p_ == '\'') return parseQuotedString(isKey);
        if (!isBareStringCharacter(*p_)) return failUnexpected();
        const char* start = p_;
        while (p_ < end_ && isBareStringCharacter(*p_)) ++p_;
        return builder_.pushString(start, size_t(p_ - start), isKey) || fail("Unable to convert string to correct encoding");
    }

    bool parseQuotedString(bool isKey) {
        char quote = *p_;
        const char* start = p_++;
        units_.clear();
        while (p_ < end_ && *p_ != quote) {
            if (*p_ != '\\') {
                const char* run = p_;
                while (p_ < end_ && *p_ != quote && *p_ != '\\') ++p_;
                if (!decodeUTF8(reinterpret_cast<const uint8_t*>(run), size_t(p_ - run), units_)) {
                    return fail("Unable to convert string to correct encoding");
                }
                continue;
            }
            if (++p_ == end_) break;
            char c = *p_++;
            switch (c) {
                case 'a': units_.push_back(u'\a'); break;
                case 'b': units_.push_back(u'\b'); break;
                case 'f': units_.push_back(u'\f'); break;
                case 'n': units_.push_back(u'\n'); break;
                case 'r': units_.push_back(u'\r'); break;
                case 't': units_.push_back(u'\t'); break;
                case 'v': units_.push_back(u'\v'); break;
                case 'U': {
                    unsigned unit = 0;
                    for (int digits = 0; digits < 4 && p_ < end_ && hexValue(*p_) >= 0; ++digits) {
                        unit = unit * 16 + unsigned(hexValue(*p_++));
                    }
                    units_.push_back(char16_t(unit));
                    break;
                }
                default:
                    if (c >= '0' && c <= '7') {
                        // Up to three octal digits: a byte of the NeXTSTEP character set.
                        unsigned byte = unsigned(c - '0');
                        for (int digits = 1; digits < 3 && p_ < end_ && *p_ >= '0' && *p_ <= '7'; ++digits) {
                            byte = byte * 8 + unsigned(*p_++ - '0');
                        }
                        byte &= 0xFF;
                        UniChar unit = byte < 0x80 ? UniChar(byte) : kNextStepLatinTable.upperHalf[byte - 0x80];
                        units_.push_back(unit != 0 ? unit : u'\uFFFD');
                    } else {
                        // Any other character stands for itself, whole.
                        const char* run = p_ - 1;
                        size_t length = 1;
                        while (run + length < end_ && (uint8_t(run[length]) & 0xC0) == 0x80 && length < 4) ++length;
                        if (!decodeUTF8(reinterpret_cast<const uint8_t*>(run), length, units_)) {
                            return fail("Unable to convert string to correct encoding");
                        }
                        p_ = run + length;
                    }
                    break;
            }
        }
        if (p_ == end_) return fail("Unterminated quoted string starting on line %zu", lineAt(start));
        ++p_;
        utf8_.clear();
        appendUTF8(utf8_, units_.data(), units_.size());
        return builder_.pushString(utf8_.data(), utf8_.size(), isKey) ||
               fail("Unable to convert string to correct encoding");
    }

    bool parseData() {
        size_t line = lineAt(p_);
        ++p_;
        bytes_.clear();
        for (;;) {
            skipSpaceAndComments();
            if (p_ == end_) return fail("Expected terminating '>' for data at line %zu", line);
            if (*p_ == '>') {
                ++p_;
                break;
            }
            int high = hexValue(*p_);
            if (high < 0) return fail("Malformed data byte group at line %zu; invalid hex", lineAt(p_));
            ++p_;
            if (p_ == end_ || hexValue(*p_) < 0) {
                return fail("Malformed data byte group at line %zu; uneven length", lineAt(p_));
            }
            bytes_.push_back(uint8_t(high * 16 + hexValue(*p_++)));
        }
        return builder_.pushData(bytes_.data(), bytes_.size()) || fail("Unexpected EOF while parsing plist");
    }

    bool parseArrayBody(size_t line) {
        size_t mark = builder_.size();
        for (;;) {
            skipSpaceAndComments();
            if (p_ == end_) return fail("Expected terminating ')' for array at line %zu", line);
            if (*p_ == ')') break;
            if (!parseObject()) return false;
            skipSpaceAndComments();
            if (p_ < end_ && *p_ == ',') {
                ++p_;
                continue;
            }
            if (p_ == end_ || *p_ != ')') return fail("Expected terminating ')' for array at line %zu", line);
        }
        ++p_;
        return builder_.makeArray(mark) || fail("Unexpected EOF while parsing plist");
    }

    // braced: inside { }; otherwise the pairs run to the end of the text.
    bool parseDictionaryBody(bool braced, size_t line) {
        size_t mark = builder_.size();
        for (;;) {
            skipSpaceAndComments();
            if (p_ == end_) {
                if (braced) return fail("Expected terminating '}' for dictionary at line %zu", line);
                break;
            }
            if (braced && *p_ == '}') {
                ++p_;
                break;
            }
            const char* keyStart = p_;
            if (!parseString(true)) return false;
            skipSpaceAndComments();
            if (p_ < end_ && *p_ == ';') {
                // "key;" stands for "key = key;".
                const char* keyEnd = p_;
                p_ = keyStart;
                if (!parseString(false)) return false;
                p_ = keyEnd + 1;
                continue;
            }
            if (p_ == end_) {
                if (braced) return fail("Expected terminating '}' for dictionary at line %zu", line);
                return fail("Missing ';' on line %zu", lineAt(p_));
            }
            if (*p_ != '=') return failUnexpected();
            ++p_;
            if (!parseObject()) return false;
            skipSpaceAndComments();
            if (p_ == end_ || *p_ != ';') return fail("Missing ';' on line %zu", lineAt(p_));
            ++p_;
        }
        return builder_.makeDictionary(mark) || fail("Unexpected EOF while parsing plist");
    }

    const char* begin_;
    const char* p_;
    const char* end_;
    PropertyListBuilder& builder_;
    ParseError& error_;
    size_t depth_ = 0;
    std::u16string units_;
    std::string utf8_;
    std::vector<uint8_t> bytes_;
};

}  // namespace

bool readOpenStepPropertyList(const char* text, size_t length, PropertyListBuilder& builder, ParseError& error) {
    return OpenStepReader(text, length, builder, error).run();
}

}  // namespace halvane::detail
