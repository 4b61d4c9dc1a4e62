// The XML property-list writer: one pass over the list, straight into one
// growing byte buffer, in the layout every reader of these files expects
// (tabs, sorted keys, base64 lines narrowing with depth).
#include "CFBase64.h"
#include "CFGregorian.h"
#include "CFPropertyListInternal.h"
#include "CFStringInternal.h"

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFNumber.h>

#include <charconv>
#include <cinttypes>
#include <cmath>
#include <cstdio>

namespace halvane::detail {

namespace {

constexpr std::string_view kHeader =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";
constexpr std::string_view kFooter = "</plist>\n";

class XMLWriter {
public:
    explicit XMLWriter(std::string& out) : out_(out) {}

    bool leaf(CFTypeRef object, PlistKind kind, size_t depth) {
        indent(depth);
        switch (kind) {
            case PlistKind::kString:
                out_.append("<string>");
                appendEscaped(static_cast<CFStringRef>(object));
                out_.append("</string>\n");
                return true;
            case PlistKind::kNumber:
                appendNumber(static_cast<CFNumberRef>(object));
                return true;
            case PlistKind::kBoolean:
                out_.append(object == kCFBooleanTrue ? "<true/>\n" : "<false/>\n");
                return true;
            case PlistKind::kDate:
                return appendDate(CFDateGetAbsoluteTime(static_cast<CFDateRef>(object)));
            case PlistKind::kData:
                appendData(static_cast<CFDataRef>(object), depth);
                return true;
            default:
                return true;
        }
    }

    void beginContainer(CFTypeRef, PlistKind kind, CFIndex count, size_t depth) {
        indent(depth);
        bool isArray = kind == PlistKind::kArray;
        if (count == 0) {
            out_.append(isArray ? "<array/>\n" : "<dict/>\n");
        } else {
            out_.append(isArray ? "<array>\n" : "<dict>\n");
        }
    }

    void key(CFStringRef key, size_t depth) {
        indent(depth);
        out_.append("<key>");
        appendEscaped(key);
        out_.append("</key>\n");
    }

    void endContainer(CFTypeRef, PlistKind kind, CFIndex count, size_t depth) {
        if (count == 0) return;
        indent(depth);
        out_.append(kind == PlistKind::kArray ? "</array>\n" : "</dict>\n");
    }

private:
    void indent(size_t depth) { out_.append(depth, '\t'); }

    // Only &, < and > are escaped; everything else, control characters
    // included, is written as it is.
    static const char* entityFor(UniChar c) {
        switch (c) {
            case '&':
                return "&amp;";
            case '<':
                return "&lt;";
            case '>':
                return "&gt;";
            default:
                return nullptr;
        }
    }

    void appendEscaped(CFStringRef s) {
        withUnits(s, [this](auto* units, CFIndex length) {
            size_t runStart = 0;
            for (size_t i = 0; i < size_t(length); ++i) {
                const char* entity = entityFor(UniChar(units[i]));
                if (entity == nullptr) continue;
                appendRun(units + runStart, i - runStart);
                out_.append(entity);
                runStart = i + 1;
            }
            appendRun(units + runStart, size_t(length) - runStart);
        });
    }

    void appendRun(const uint8_t* ascii, size_t length) { out_.append(reinterpret_cast<const char*>(ascii), length); }
    void appendRun(const UniChar* units, size_t length) { appendUTF8(out_, units, length); }

    void appendNumber(CFNumberRef number) {
        char text[32];
        std::to_chars_result written{text, std::errc()};
        CFNumberType type = CFNumberGetType(number);
        if (CFNumberIsFloatType(number)) {
            double value = 0;
            CFNumberGetValue(number, kCFNumberFloat64Type, &value);
            out_.append("<real>");
            if (std::isnan(value)) {
                out_.append("nan");
            } else if (std::isinf(value)) {
                out_.append(value > 0 ? "+infinity" : "-infinity");
            } else if (value == 0) {
                out_.append("0.0");
            } else {
                // Shortest form that is the same as printf's %.17g in the C
                // locale, whatever the process locale is.
                written = std::to_chars(text, text + sizeof text, value, std::chars_format::general, 17);
                out_.append(text, size_t(written.ptr - text));
            }
            out_.append("</real>\n");
            return;
        }
        if (type >= kCFNumberUInt8Type) {
            uint64_t value = 0;
            CFNumberGetValue(number, kCFNumberUInt64Type, &value);
            written = std::to_chars(text, text + sizeof text, value);
        } else {
            int64_t value = 0;
            CFNumberGetValue(number, kCFNumberSInt64Type, &value);
            written = std::to_chars(text, text + sizeof text, value);
        }
        out_.append("<integer>");
        out_.append(text, size_t(written.ptr - text));
        out_.append("</integer>\n");
    }

    // Whole seconds in UTC; the fraction is cut off, not rounded.
    bool appendDate(CFAbsoluteTime time) {
        DateTimeFields fields{};
        if (!dateTimeFromAbsoluteTime(time, fields)) return false;
        char text[64];
        int length = std::snprintf(text, sizeof text, "<date>%04" PRId64 "-%02d-%02dT%02d:%02d:%02dZ</date>\n",
                                   fields.year, fields.month, fields.day, fields.hour, fields.minute,
                                   int(std::floor(fields.second)));
        out_.append(text, size_t(length));
        return true;
    }

    // The base64 lines carry the indentation of the tag, and get shorter
    // with depth: 76 characters at the top, 8 fewer per level, 12 at least.
    void appendData(CFDataRef data, size_t depth) {
        out_.append("<data>\n");
        size_t width = 76 - 8 * std::min<size_t>(depth, 8);
        appendBase64Lines(out_, CFDataGetBytePtr(data), size_t(CFDataGetLength(data)), width, depth);
        indent(depth);
        out_.append("</data>\n");
    }

    std::string& out_;
};

}  // namespace

PlistIssue writeXMLPropertyList(CFPropertyListRef plist, std::string& out) {
    out.append(kHeader);
    XMLWriter writer(out);
    TraversalRules rules;
    rules.limitReferences = true;
    rules.sortKeys = true;
    PlistIssue issue = traversePropertyList(plist, rules, writer);
    out.append(kFooter);
    return issue;
}

}  // namespace halvane::detail
