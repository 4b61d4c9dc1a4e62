// The XML property-list reader.
//
// The prolog (XML declaration, processing instructions, comments, the
// DOCTYPE) is skipped before the XML parser starts, so that it only ever
// sees the elements: no DTD, no entity declaration and no external
// reference can reach it, and the document type is never loaded from
// anywhere. Expat parses the elements; the handlers below check them
// against the property-list rules and build the objects with an explicit
// stack, stopping the parser after the first element, whatever follows.
#include "CFBase64.h"
#include "CFPropertyListInternal.h"
#include "CFStringInternal.h"

#include <expat.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace halvane::detail {

namespace {

// --- Elements ------------------------------------------------------------------

enum class Element : uint8_t { kPlist, kArray, kDict, kKey, kString, kData, kDate, kReal, kInteger, kTrue, kFalse };

const char* nameOf(Element element) {
    static constexpr const char* kNames[] = {"plist", "array", "dict",    "key",  "string", "data",
                                             "date",  "real",  "integer", "true", "false"};
    return kNames[size_t(element)];
}

// Called for every tag: one comparison of the whole name at most.
bool elementNamed(const char* name, Element& element) {
    Element candidate;
    switch (name[0]) {
        case 'a': candidate = Element::kArray; break;
        case 'd':
            candidate = name[1] == 'i' ? Element::kDict : name[2] == 't' && name[3] == 'a' ? Element::kData : Element::kDate;
            break;
        case 'f': candidate = Element::kFalse; break;
        case 'i': candidate = Element::kInteger; break;
        case 'k': candidate = Element::kKey; break;
        case 'p': candidate = Element::kPlist; break;
        case 'r': candidate = Element::kReal; break;
        case 's': candidate = Element::kString; break;
        case 't': candidate = Element::kTrue; break;
        default: return false;
    }
    if (std::strcmp(name, nameOf(candidate)) != 0) return false;
    element = candidate;
    return true;
}

inline bool isContainer(Element e) { return e == Element::kPlist || e == Element::kArray || e == Element::kDict; }
inline bool isText(Element e) { return e == Element::kString || e == Element::kKey; }
inline bool isBoolean(Element e) { return e == Element::kTrue || e == Element::kFalse; }

struct OpenElement {
    Element element;
    bool isDictionaryKey = false;  // a <key> in key position: always an immutable string
    bool hasObject = false;        // <plist>: its one object was read
    size_t mark = 0;               // containers: builder size when they opened
};

class XMLReader {
public:
    XMLReader(const char* text, size_t length, size_t firstLine, bool standIns, PropertyListBuilder& builder,
              ParseError& error)
        : text_(text), length_(length), firstLine_(firstLine), standIns_(standIns), builder_(builder), error_(error) {}

    bool run() {
        parser_ = XML_ParserCreate("UTF-8");
        if (parser_ == nullptr) {
            error_.message = "Encountered unexpected EOF";
            return false;
        }
        XML_SetUserData(parser_, this);
        XML_SetElementHandler(parser_, onStart, onEnd);
        XML_SetCharacterDataHandler(parser_, onText);
        XML_SetCommentHandler(parser_, onComment);
        XML_SetProcessingInstructionHandler(parser_, onInstruction);
        XML_SetCdataSectionHandler(parser_, onCdataStart, onCdataEnd);
        // Nothing outside the document is ever read: no parameter entities,
        // and any external entity reference is an error.
        XML_SetParamEntityParsing(parser_, XML_PARAM_ENTITY_PARSING_NEVER);
        XML_SetExternalEntityRefHandler(parser_, refuseExternalEntity);
        XML_Parse(parser_, text_, int(length_), XML_TRUE);
        if (!done_ && !failed_) mapParserError();
        XML_ParserFree(parser_);
        return done_;
    }

private:
    static XMLReader& self(void* userData) { return *static_cast<XMLReader*>(userData); }

    static int XMLCALL refuseExternalEntity(XML_Parser, const XML_Char*, const XML_Char*, const XML_Char*,
                                            const XML_Char*) {
        return XML_STATUS_ERROR;
    }

    static void XMLCALL onStart(void* userData, const XML_Char* name, const XML_Char**) { self(userData).start(name); }
    static void XMLCALL onEnd(void* userData, const XML_Char*) { self(userData).end(); }
    static void XMLCALL onText(void* userData, const XML_Char* s, int length) { self(userData).characters(s, length); }
    static void XMLCALL onComment(void* userData, const XML_Char*) { self(userData).markup('!'); }
    static void XMLCALL onInstruction(void* userData, const XML_Char*, const XML_Char*) {
        self(userData).markup('?');
    }
    static void XMLCALL onCdataStart(void* userData) { self(userData).cdataStart(); }
    static void XMLCALL onCdataEnd(void* userData) { self(userData).inCdata_ = false; }

    bool stopped() const { return done_ || failed_; }

    size_t line() const { return firstLine_ + size_t(XML_GetCurrentLineNumber(parser_)) - 1; }

    // The raw text of the current event.
    const char* eventText() const { return text_ + XML_GetCurrentByteIndex(parser_); }
    size_t eventLength() const { return size_t(XML_GetCurrentByteCount(parser_)); }

    [[gnu::format(printf, 2, 3)]] void fail(const char* format, ...) {
        char small[512];
        std::va_list arguments;
        va_start(arguments, format);
        int needed = std::vsnprintf(small, sizeof small, format, arguments);
        va_end(arguments);
        error_.message.assign(small, needed < 0 ? 0 : std::min(size_t(needed), sizeof small - 1));
        failed_ = true;
        XML_StopParser(parser_, XML_FALSE);
    }

    void failUnexpectedInLeaf(const std::string& character) {
        Element e = open_.back().element;
        if (isBoolean(e)) return fail("Encountered non-empty <%s> on line %zu", nameOf(e), line());
        fail("Encountered unexpected character %s on line %zu while looking for close tag", character.c_str(), line());
    }

    void start(const XML_Char* name) {
        if (stopped()) return;
        Element element{};
        bool known = elementNamed(name, element);
        bool isDictionaryKey = false;
        if (!open_.empty()) {
            const OpenElement& parent = open_.back();
            if (!isContainer(parent.element)) return failUnexpectedInLeaf(characterAt(name, std::strlen(name)));
            if (parent.element == Element::kPlist && parent.hasObject) {
                return fail("Encountered unexpected element at line %zu (plist can only include one object)", line());
            }
            if (parent.element == Element::kDict && (builder_.size() - parent.mark) % 2 == 0) {
                if (known && element != Element::kKey) return fail("Found non-key inside <dict> at line %zu", line());
                isDictionaryKey = true;
            }
        }
        if (!known || (element == Element::kPlist && !open_.empty())) {
            return fail("Encountered unknown tag %s on line %zu", name, line());
        }
        if (element == Element::kArray || element == Element::kDict) {
            if (containerDepth_ == kPropertyListMaxNesting) {
                return fail("Too many nested arrays or dictionaries, failing on line %zu", line());
            }
            ++containerDepth_;
        }
        if (!isContainer(element)) content_.clear();
        open_.push_back(OpenElement{element, isDictionaryKey, false, builder_.size()});
    }

    void end() {
        if (stopped()) return;
        const OpenElement& element = open_.back();
        bool selfClosing = eventLength() == 0;
        switch (element.element) {
            case Element::kPlist:
                if (!element.hasObject) return fail("Encountered empty plist tag");
                break;
            case Element::kArray:
                if (!builder_.makeArray(element.mark)) return fail("Encountered unexpected EOF");
                --containerDepth_;
                break;
            case Element::kDict:
                if ((builder_.size() - element.mark) % 2 != 0) {
                    return fail("Value missing for key inside <dict> at line %zu", line());
                }
                if (!builder_.makeDictionary(element.mark)) return fail("Encountered unexpected EOF");
                --containerDepth_;
                break;
            case Element::kString:
            case Element::kKey:
                if (standIns_) restoreRefused(content_);
                if (!builder_.pushString(content_.data(), content_.size(), element.isDictionaryKey)) {
                    return fail("Unable to convert string to correct encoding");
                }
                break;
            case Element::kInteger:
                if (!finishInteger()) return;
                break;
            case Element::kReal:
                if (selfClosing) return fail("Encountered empty <real> on line %zu", line());
                if (!finishReal()) return;
                break;
            case Element::kDate:
                if (selfClosing) return fail("Encountered empty <date> on line %zu", line());
                if (!finishDate()) return;
                break;
            case Element::kData:
                if (selfClosing) return fail("Encountered empty <data> on line %zu", line());
                if (!finishData()) return;
                break;
            case Element::kTrue:
            case Element::kFalse:
                builder_.pushBoolean(element.element == Element::kTrue);
                break;
        }
        open_.pop_back();
        if (open_.empty()) {
            // The first element is the document; whatever follows is ignored.
            done_ = true;
            XML_StopParser(parser_, XML_FALSE);
        } else if (open_.back().element == Element::kPlist) {
            open_.back().hasObject = true;
        }
    }

    void characters(const XML_Char* s, int length) {
        if (stopped() || open_.empty()) return;
        Element e = open_.back().element;
        // The parser hands text over as written, except references (decoded)
        // and line ends (CR and CRLF become LF, in an event of their own).
        // An event as long as the text it delivers, other than a line end,
        // is the text as written.
        size_t rawLength = eventLength();
        bool sameLength = rawLength == size_t(length);
        bool asWritten = sameLength && !(length == 1 && s[0] == '\n');
        if (isContainer(e)) {
            if (sameLength && std::all_of(s, s + length, isXMLSpace)) return;
            const char* raw = eventText();
            for (size_t i = 0; i < rawLength; ++i) {
                if (isXMLSpace(raw[i])) continue;
                return fail("Encountered unexpected character %s on line %zu while looking for open tag",
                            characterAt(raw + i, rawLength - i).c_str(), line() + countLineBreaks(raw, raw + i));
            }
            return;
        }
        if (isBoolean(e)) return fail("Encountered non-empty <%s> on line %zu", nameOf(e), line());
        if (asWritten) {
            content_.append(s, size_t(length));
            return;
        }
        const char* raw = eventText();
        if (e == Element::kInteger || e == Element::kDate || e == Element::kData) {
            // Read as written: entities mean nothing to these.
            content_.append(raw, rawLength);
            return;
        }
        // Line ends as written, so that CR and CRLF survive; references as
        // the parser decoded them.
        bool isReference = !inCdata_ && rawLength > 0 && raw[0] == '&';
        if (!isReference && rawLength > 0 && raw[0] == '\r') {
            content_.append(raw, rawLength);
            return;
        }
        if (isReference && rawLength > 2 && raw[1] == '#' && !checkReferenceLength(rawLength)) return;
        content_.append(s, size_t(length));
    }

    // At most eight characters between "&#" and ";".
    bool checkReferenceLength(size_t length) {
        if (length < 3 || length - 3 <= 8) return true;
        fail("Encountered unparseable unicode sequence at line %zu while parsing data (too large of a value for a "
             "Unicode sequence)",
             line());
        return false;
    }

    void markup(char kind) {
        if (stopped() || open_.empty()) return;
        Element e = open_.back().element;
        if (isContainer(e)) return;
        if (isText(e) && kind == '!') return fail("Encountered improper CDATA opening at line %zu", line());
        failUnexpectedInLeaf(std::string(1, kind));
    }

    void cdataStart() {
        if (stopped() || open_.empty()) return;
        Element e = open_.back().element;
        if (isText(e)) {
            inCdata_ = true;
            cdataStart_ = size_t(XML_GetCurrentByteIndex(parser_));
            return;
        }
        if (isContainer(e)) return fail("Encountered unexpected EOF");
        failUnexpectedInLeaf("!");
    }

    // --- Leaves ---

    size_t lineAt(size_t offset) const { return firstLine_ + countLineBreaks(text_, text_ + std::min(offset, length_)); }

    // The line of content_[index], from the close tag that follows the
    // content (integers, dates and data keep their line ends as written).
    size_t contentLineAt(size_t index) const {
        return line() - countLineBreaks(content_.data() + index, content_.data() + content_.size());
    }

    bool finishInteger() {
        if (standIns_) restoreRefused(content_);
        ParsedInteger parsed = parseXMLInteger(content_);
        auto where = [&] { return contentLineAt(parsed.position); };
        switch (parsed.problem) {
            case IntegerProblem::kNone:
                break;
            case IntegerProblem::kEmpty:
                fail("Encountered empty <integer> on line %zu", line());
                return false;
            case IntegerProblem::kIncomplete:
                fail("Incomplete <integer> on line %zu", where());
                return false;
            case IntegerProblem::kHexDigitInDecimal:
                fail("Hex digit in non-hex <integer> on line %zu", where());
                return false;
            case IntegerProblem::kUnknownCharacter: {
                std::string character = characterAt(content_.data() + parsed.position, content_.size() - parsed.position);
                fail("Unknown character '%s' (0x%02x) in <integer> on line %zu", character.c_str(),
                     unsigned(codePointOf(character)), where());
                return false;
            }
            case IntegerProblem::kOverflow:
                fail("Integer overflow in <integer> on line %zu", line());
                return false;
            case IntegerProblem::kUnderflow:
                fail("Integer underflow in <integer> on line %zu", line());
                return false;
        }
        bool made;
        if (parsed.magnitude == 0) {
            // Zero is the one integer read as a 32-bit number.
            int32_t zero = 0;
            made = builder_.pushNumber(kCFNumberSInt32Type, &zero);
        } else if (parsed.negative || parsed.magnitude <= uint64_t(INT64_MAX)) {
            int64_t value = parsed.negative ? int64_t(0 - parsed.magnitude) : int64_t(parsed.magnitude);
            made = builder_.pushNumber(kCFNumberSInt64Type, &value);
        } else {
            made = builder_.pushNumber(kCFNumberUInt64Type, &parsed.magnitude);
        }
        if (!made) fail("Encountered unexpected EOF");
        return made;
    }

    bool finishReal() {
        if (standIns_) restoreRefused(content_);
        double value;
        if (!parseXMLReal(content_, value)) {
            fail("Encountered misformatted real on line %zu", line());
            return false;
        }
        if (!builder_.pushNumber(kCFNumberFloat64Type, &value)) {
            fail("Encountered unexpected EOF");
            return false;
        }
        return true;
    }

    bool finishDate() {
        if (standIns_) restoreRefused(content_);
        CFAbsoluteTime time;
        if (!parseXMLDate(content_, time)) {
            fail("Could not interpret <date> at line %zu", line());
            return false;
        }
        if (!builder_.pushDate(time)) {
            fail("Encountered unexpected EOF");
            return false;
        }
        return true;
    }

    bool finishData() {
        if (standIns_) restoreRefused(content_);
        bytes_.clear();
        ptrdiff_t refused = decodeBase64Leniently(content_.data(), content_.size(), bytes_);
        if (refused >= 0) {
            fail("Could not interpret <data> on line %zu (invalid character 0x%02X)", contentLineAt(size_t(refused)),
                 unsigned(uint8_t(content_[size_t(refused)])));
            return false;
        }
        if (!builder_.pushData(bytes_.data(), bytes_.size())) {
            fail("Encountered unexpected EOF");
            return false;
        }
        return true;
    }

    // --- Errors the parser found ---

    bool at(size_t offset, std::string_view what) const {
        return offset <= length_ && std::string_view(text_ + offset, length_ - offset).starts_with(what);
    }

    // The "&" that starts the reference offset lies in (at most a dozen
    // name or number characters back), or npos.
    size_t referenceStartBefore(size_t offset) const {
        if (length_ == 0) return std::string_view::npos;
        size_t k = std::min(offset, length_ - 1);
        for (size_t steps = 0; steps <= 12; ++steps, --k) {
            char c = text_[k];
            if (c == '&') return k;
            bool partOfReference =
                (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '#';
            if (k != offset && !partOfReference) break;
            if (k == 0) break;
        }
        return std::string_view::npos;
    }

    void failAtEnd() {
        if (!open_.empty()) {
            const OpenElement& top = open_.back();
            if (top.element == Element::kInteger) return fail("Premature end of file after <integer> on line %zu", line());
            if (top.element == Element::kDict && (builder_.size() - top.mark) % 2 != 0) {
                return fail("Value missing for key inside <dict> at line %zu", line());
            }
        }
        fail("Encountered unexpected EOF");
    }

    void mapParserError() {
        XML_Error code = XML_GetErrorCode(parser_);
        size_t offset = std::min(size_t(XML_GetCurrentByteIndex(parser_)), length_);
        const OpenElement* top = open_.empty() ? nullptr : &open_.back();
        std::string character = characterAt(text_ + offset, length_ - offset);
        switch (code) {
            case XML_ERROR_NO_ELEMENTS:
            case XML_ERROR_UNCLOSED_TOKEN:
            case XML_ERROR_PARTIAL_CHAR:
                if (at(offset, "<!--")) return fail("Unterminated comment started on line %zu", line());
                if (at(offset, "<?")) {
                    return fail("Encountered unexpected EOF while parsing the processing instruction begun on line %zu",
                                line());
                }
                return failAtEnd();
            case XML_ERROR_UNCLOSED_CDATA_SECTION:
                return fail("Could not find end of CDATA started on line %zu", inCdata_ ? lineAt(cdataStart_) : line());
            case XML_ERROR_TAG_MISMATCH:
                return fail("Close tag on line %zu does not match open tag %s", line(),
                            top != nullptr ? nameOf(top->element) : "");
            case XML_ERROR_UNDEFINED_ENTITY:
                return fail("Encountered unknown ampersand-escape sequence at line %zu", line());
            case XML_ERROR_BAD_CHAR_REF: {
                const void* semicolon = std::memchr(text_ + offset, ';', std::min<size_t>(length_ - offset, 64));
                if (semicolon != nullptr && at(offset, "&#") &&
                    !checkReferenceLength(size_t(static_cast<const char*>(semicolon) - (text_ + offset)) + 1)) {
                    return;
                }
                return fail("Encountered unparseable Unicode sequence at line %zu while parsing data (input did not "
                            "result in a real string)",
                            line());
            }
            default:
                break;
        }
        // A reference cut short or holding a bad digit: the parser stops at
        // the character after "&" or in the number.
        if (size_t ampersand = referenceStartBefore(offset); ampersand != std::string_view::npos) {
            if (at(ampersand, "&#")) {
                return fail("Encountered unexpected character %s at line %zu while parsing data", character.c_str(),
                            line());
            }
            return fail("Encountered unknown ampersand-escape sequence at line %zu", line());
        }
        if (offset >= 1 && text_[offset - 1] == '<' && offset < length_ &&
            (text_[offset] == '>' || isXMLSpace(text_[offset]))) {
            return fail("Malformed tag on line %zu", line());
        }
        Element e = top != nullptr ? top->element : Element::kPlist;
        if (offset >= 2 && text_[offset - 2] == '<' && text_[offset - 1] == '!') {
            if (isText(e)) return fail("Encountered improper CDATA opening at line %zu", line());
            if (isContainer(e)) return fail("Encountered unexpected EOF");
            return failUnexpectedInLeaf("!");
        }
        if (offset < length_ && uint8_t(text_[offset]) >= 0x80) {
            if (isText(e)) return fail("Unable to convert string to correct encoding");
            if (e == Element::kData) {
                return fail("Could not interpret <data> on line %zu (invalid character 0x%02X)", line(),
                            unsigned(uint8_t(text_[offset])));
            }
        }
        // Inside a close tag, or where one was the only thing allowed.
        size_t tagStart = std::min(offset, length_ - 1);
        while (tagStart > 0 && text_[tagStart] != '<' && text_[tagStart] != '>') --tagStart;
        bool inCloseTag = at(tagStart, "</");
        if (inCloseTag || !isContainer(e)) {
            if (isBoolean(e) && !inCloseTag) return fail("Encountered non-empty <%s> on line %zu", nameOf(e), line());
            return fail("Encountered unexpected character %s on line %zu while looking for close tag", character.c_str(),
                        line());
        }
        fail("Encountered unexpected character %s on line %zu while looking for open tag", character.c_str(), line());
    }

    const char* text_;
    size_t length_;
    size_t firstLine_;
    bool standIns_;
    PropertyListBuilder& builder_;
    ParseError& error_;
    XML_Parser parser_ = nullptr;
    std::vector<OpenElement> open_;
    size_t containerDepth_ = 0;
    std::string content_;  // text of the open leaf
    std::vector<uint8_t> bytes_;
    bool inCdata_ = false;
    size_t cdataStart_ = 0;
    bool done_ = false;
    bool failed_ = false;
};

}  // namespace

bool readXMLPropertyList(const char* text, size_t length, PropertyListBuilder& builder, ParseError& error) {
    size_t offset = 0, line = 1;
    if (!skipProlog(text, length, offset, line, error)) return false;
    const char* body = text + offset;
    size_t bodyLength = length - offset;
    std::string replaced;
    int refused = refusedCharacters(body, bodyLength);
    if (refused < 0) {
        error.message = "Unable to convert string to correct encoding";
        return false;
    }
    if (refused > 0) {
        replaced = withStandIns(body, bodyLength);
        body = replaced.data();
        bodyLength = replaced.size();
    }
    XMLReader reader(body, bodyLength, line, refused > 0, builder, error);
    return reader.run();
}

}  // namespace halvane::detail
