// CFStringCreateWithFormat and friends: printf-style formatting into UTF-16
// text, with %@ for objects.
//
// A format is handled in three steps. Parsing records every directive
// and the type of every argument it names; the variable arguments are then
// read once, in order (positional directives may name them in any order
// and more than once); finally the output is built in one buffer and turned
// into a string. Integers are formatted here, floating-point numbers with
// std::to_chars or, for the rarer forms, by the C library switched to the C
// locale, so the process locale never shows through.
#include "CFStringInternal.h"

#include <CoreFoundation/CFDictionary.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdarg>
#include <cstring>
#include <memory>
#include <new>

using namespace halvane::detail;

namespace halvane::detail {

namespace {

enum FormatFlag : uint8_t { kLeftJustify = 1, kPlusSign = 2, kSpaceSign = 4, kZeroPad = 8, kAlternateForm = 16 };

enum class ValueSize : uint8_t { Default, Char, Short, Long, LongDouble };

enum class ArgumentType : uint8_t { Unused, Int, Long, Double, LongDouble, Pointer };

enum class Conversion : uint8_t {
    Nothing,     // incomplete directive at the end of the format
    Literal,     // %% and unknown conversions: one unit printed as it is
    Object,      // %@
    Signed,      // %d %i %D
    Unsigned,    // %u %o %x %X %U %O
    Floating,    // %f %F %e %E %g %G %a %A
    Char,        // %c
    Unit,        // %C
    CString,     // %s
    UnitString,  // %S
    Pointer,     // %p
    Count        // %n
};

constexpr int32_t kNoArgument = -1;
constexpr int32_t kNoValue = -1;  // width or precision not given
// Positional indices above this are an overflow, not merely out of range.
constexpr int64_t kMaximumPosition = 127;
// Numbers in a format are read up to this value; anything larger is an
// overflow whatever it was meant for.
constexpr int64_t kSaturatedNumber = int64_t(1) << 40;

struct Directive {
    CFIndex begin;  // the '%'
    CFIndex end;    // one past the conversion character
    Conversion conversion;
    char letter;      // d u o x X p or the floating-point letter
    UniChar literal;  // for Conversion::Literal
    uint8_t flags;
    ValueSize size;
    int32_t width;
    int32_t precision;
    int32_t widthArgument;
    int32_t precisionArgument;
    int32_t valueArgument;
};

struct Argument {
    ArgumentType type;
    union {
        int64_t integer;
        double real;
        long double longReal;
        const void* pointer;
    };
};

// Storage for a count known before parsing: on the stack for the formats of
// everyday use, on the heap beyond.
template <typename T, size_t InlineCount>
class ScratchArray {
public:
    explicit ScratchArray(size_t count) {
        if (count > InlineCount) {
            heap_ = std::make_unique<T[]>(count);
            data_ = heap_.get();
        }
    }
    T& operator[](size_t index) { return data_[index]; }
    const T& operator[](size_t index) const { return data_[index]; }

private:
    T inline_[InlineCount];
    std::unique_ptr<T[]> heap_;
    T* data_ = inline_;
};

constexpr size_t kInlineDirectives = 16;
constexpr size_t kInlineArguments = 3 * kInlineDirectives + 1;

enum class ParseOutcome { Formatted, GiveUp, Overflow };

template <typename Unit>
bool isDigit(Unit c) {
    return c >= '0' && c <= '9';
}

template <typename Unit>
int64_t readNumber(const Unit* format, CFIndex length, CFIndex& i) {
    int64_t number = 0;
    while (i < length && isDigit(format[i])) {
        number = std::min(number * 10 + (format[i] - '0'), kSaturatedNumber);
        ++i;
    }
    return number;
}

// "N$" at i: returns N and moves past the '$'. Returns 0 and leaves i alone
// when there is none (digits without a '$' are a width).
template <typename Unit>
int64_t readPosition(const Unit* format, CFIndex length, CFIndex& i) {
    if (i >= length || format[i] < '1' || format[i] > '9') return 0;
    CFIndex j = i;
    int64_t position = readNumber(format, length, j);
    if (j >= length || format[j] != '$') return 0;
    i = j + 1;
    return position;
}

// The directives of a format and the types of the arguments they name.
class FormatParser {
public:
    FormatParser(ScratchArray<Directive, kInlineDirectives>& directives,
                 ScratchArray<Argument, kInlineArguments>& arguments, size_t argumentCapacity)
        : directives_(directives), arguments_(arguments), argumentCapacity_(argumentCapacity) {
        for (size_t k = 0; k < argumentCapacity; ++k) arguments_[k].type = ArgumentType::Unused;
    }

    template <typename Unit>
    ParseOutcome parse(const Unit* format, CFIndex length) {
        for (CFIndex i = 0; i < length; ++i) {
            if (format[i] != '%') continue;
            Directive& directive = directives_[directiveCount_++];
            i = parseDirective(format, length, i, directive);
            --i;  // the loop steps past the conversion character
        }
        if (overflow_) return ParseOutcome::Overflow;
        if (giveUp_) return ParseOutcome::GiveUp;
        return ParseOutcome::Formatted;
    }

    size_t directiveCount() const { return directiveCount_; }
    size_t argumentCount() const { return argumentCount_; }
    int64_t overflowValue() const { return overflowValue_; }
    bool overflowIsPosition() const { return overflowIsPosition_; }

private:
    // Parses the directive starting at the '%' at begin; returns the
    // index just past it.
    template <typename Unit>
    CFIndex parseDirective(const Unit* format, CFIndex length, CFIndex begin, Directive& directive) {
        directive = Directive{};  // Conversion::Nothing, no flags, default size
        directive.begin = begin;
        directive.end = length;
        directive.width = directive.precision = kNoValue;
        directive.widthArgument = directive.precisionArgument = directive.valueArgument = kNoArgument;
        CFIndex i = begin + 1;
        // Arguments are assigned only once the conversion is known to take
        // one, so that "%*k" or a "%5" at the end reads nothing.
        size_t sequentialBefore = nextSequential_;
        int64_t valuePosition = readPosition(format, length, i);
        int64_t widthPosition = 0, precisionPosition = 0;
        bool widthFromArgument = false, precisionFromArgument = false;

        for (; i < length; ++i) {
            Unit c = format[i];
            if (c == '-') {
                directive.flags |= kLeftJustify;
            } else if (c == '+') {
                directive.flags |= kPlusSign;
            } else if (c == ' ') {
                directive.flags |= kSpaceSign;
            } else if (c == '0') {
                directive.flags |= kZeroPad;
            } else if (c == '#') {
                directive.flags |= kAlternateForm;
            } else {
                break;
            }
        }
        if (i < length && format[i] == '*') {
            ++i;
            widthFromArgument = true;
            widthPosition = readPosition(format, length, i);
        } else if (i < length && isDigit(format[i])) {
            directive.width = checkedNumber(readNumber(format, length, i));
        }
        if (i < length && format[i] == '.') {
            ++i;
            if (i < length && format[i] == '*') {
                ++i;
                precisionFromArgument = true;
                precisionPosition = readPosition(format, length, i);
            } else {
                directive.precision = checkedNumber(readNumber(format, length, i));
            }
        }
        i = parseSize(format, length, i, directive.size);
        if (i >= length) {
            nextSequential_ = sequentialBefore;
            return length;
        }
        directive.end = i + 1;
        ArgumentType valueType = classify(format[i], directive);
        if (valueType == ArgumentType::Unused) {
            nextSequential_ = sequentialBefore;
            return directive.end;
        }
        // Width before precision before the value, as printf reads them.
        if (widthFromArgument) directive.widthArgument = assign(widthPosition, ArgumentType::Int);
        if (precisionFromArgument) directive.precisionArgument = assign(precisionPosition, ArgumentType::Int);
        directive.valueArgument = assign(valuePosition, valueType);
        return directive.end;
    }

    template <typename Unit>
    static CFIndex parseSize(const Unit* format, CFIndex length, CFIndex i, ValueSize& size) {
        if (i >= length) return i;
        switch (format[i]) {
            case 'h':
                if (i + 1 < length && format[i + 1] == 'h') {
                    size = ValueSize::Char;
                    return i + 2;
                }
                size = ValueSize::Short;
                return i + 1;
            case 'l':
                size = ValueSize::Long;
                return (i + 1 < length && format[i + 1] == 'l') ? i + 2 : i + 1;
            case 'q':
            case 'j':
            case 'z':
            case 't':
                size = ValueSize::Long;
                return i + 1;
            case 'L':
                size = ValueSize::LongDouble;
                return i + 1;
            default:
                return i;
        }
    }

    // Sets the conversion of directive from its character; returns the type of
    // the value it reads (Unused when it reads none).
    template <typename Unit>
    static ArgumentType classify(Unit c, Directive& directive) {
        // Integers: int unless a length modifier says long; "L" reads a
        // long long, as the C library does with the same text.
        ArgumentType integer =
            (directive.size == ValueSize::Default || directive.size == ValueSize::Char || directive.size == ValueSize::Short)
                ? ArgumentType::Int
                : ArgumentType::Long;
        switch (c) {
            case 'd':
            case 'i':
            case 'D':
                directive.conversion = Conversion::Signed;
                directive.letter = 'd';
                return integer;
            case 'u':
            case 'U':
                directive.conversion = Conversion::Unsigned;
                directive.letter = 'u';
                return integer;
            case 'o':
            case 'O':
                directive.conversion = Conversion::Unsigned;
                directive.letter = 'o';
                return integer;
            case 'x':
            case 'X':
                directive.conversion = Conversion::Unsigned;
                directive.letter = char(c);
                return integer;
            case 'f':
            case 'F':
            case 'e':
            case 'E':
            case 'g':
            case 'G':
            case 'a':
            case 'A':
                directive.conversion = Conversion::Floating;
                directive.letter = char(c);
                return directive.size == ValueSize::LongDouble ? ArgumentType::LongDouble : ArgumentType::Double;
            case 'c':
                directive.conversion = Conversion::Char;
                return ArgumentType::Int;
            case 'C':
                directive.conversion = Conversion::Unit;
                return ArgumentType::Int;
            case 's':
                directive.conversion = Conversion::CString;
                return ArgumentType::Pointer;
            case 'S':
                directive.conversion = Conversion::UnitString;
                return ArgumentType::Pointer;
            case 'p':
                directive.conversion = Conversion::Pointer;
                directive.letter = 'p';
                return ArgumentType::Pointer;
            case 'n':
                directive.conversion = Conversion::Count;
                return ArgumentType::Pointer;
            case '@':
                directive.conversion = Conversion::Object;
                return ArgumentType::Pointer;
            default:
                // "%%" prints '%'; any other character prints itself.
                directive.conversion = Conversion::Literal;
                directive.literal = UniChar(c);
                return ArgumentType::Unused;
        }
    }

    int32_t checkedNumber(int64_t number) {
        if (number > INT32_MAX) noteOverflow(number, false);
        return int32_t(std::min<int64_t>(number, INT32_MAX));
    }

    void noteOverflow(int64_t value, bool isPosition) {
        if (overflow_) return;
        overflow_ = true;
        overflowValue_ = value;
        overflowIsPosition_ = isPosition;
    }

    // The argument slot of a value: the 1-based position when one was
    // given, else the next sequential argument. The first use of a slot
    // decides how it is read.
    int32_t assign(int64_t position, ArgumentType type) {
        size_t slot = 0;
        if (position > 0) {
            if (position > kMaximumPosition) noteOverflow(position, true);
            if (size_t(position) > argumentCapacity_) {
                giveUp_ = true;
                return kNoArgument;
            }
            slot = size_t(position) - 1;
        } else {
            slot = nextSequential_++;
        }
        if (arguments_[slot].type == ArgumentType::Unused) arguments_[slot].type = type;
        argumentCount_ = std::max(argumentCount_, slot + 1);
        return int32_t(slot);
    }

    ScratchArray<Directive, kInlineDirectives>& directives_;
    ScratchArray<Argument, kInlineArguments>& arguments_;
    size_t argumentCapacity_;
    size_t directiveCount_ = 0;
    size_t argumentCount_ = 0;
    size_t nextSequential_ = 0;
    bool giveUp_ = false;
    bool overflow_ = false;
    int64_t overflowValue_ = 0;
    bool overflowIsPosition_ = false;
};

void readArguments(ScratchArray<Argument, kInlineArguments>& arguments, size_t count, va_list list) {
    va_list ap;
    va_copy(ap, list);
    for (size_t k = 0; k < count; ++k) {
        Argument& argument = arguments[k];
        switch (argument.type) {
            case ArgumentType::Int:
                argument.integer = va_arg(ap, int);
                break;
            case ArgumentType::Long:
                argument.integer = va_arg(ap, long);
                break;
            case ArgumentType::Double:
                argument.real = va_arg(ap, double);
                break;
            case ArgumentType::LongDouble:
                argument.longReal = va_arg(ap, long double);
                break;
            case ArgumentType::Pointer:
                argument.pointer = va_arg(ap, const void*);
                break;
            case ArgumentType::Unused:
                // No directive names this position: step over a
                // pointer-sized value to reach the ones after it.
                argument.integer = va_arg(ap, long);
                break;
        }
    }
    va_end(ap);
}

int64_t integerOf(const Argument& argument) {
    switch (argument.type) {
        case ArgumentType::Int:
        case ArgumentType::Long:
        case ArgumentType::Unused:
            return argument.integer;
        case ArgumentType::Pointer:
            return int64_t(reinterpret_cast<intptr_t>(argument.pointer));
        case ArgumentType::Double:
        case ArgumentType::LongDouble:
            break;
    }
    return 0;
}

const void* pointerOf(const Argument& argument) {
    if (argument.type == ArgumentType::Pointer) return argument.pointer;
    if (argument.type == ArgumentType::Double || argument.type == ArgumentType::LongDouble) return nullptr;
    return reinterpret_cast<const void*>(intptr_t(argument.integer));
}

// Pads the field that starts at start (and runs to the end of text) with
// spaces up to width.
void padField(std::u16string& text, size_t start, int width, uint8_t flags) {
    size_t written = text.size() - start;
    if (width <= 0 || size_t(width) <= written) return;
    size_t padding = size_t(width) - written;
    if (flags & kLeftJustify) {
        text.append(padding, u' ');
    } else {
        text.insert(start, padding, u' ');
    }
}

// printf's integer conversions (d u o x X) and %p, which prints like %#lx
// but always with the 0x, also for NULL.
void appendInteger(std::u16string& text, uint64_t magnitude, bool negative, char letter, uint8_t flags, int width,
                   int precision) {
    char digits[24];
    int base = letter == 'o' ? 8 : (letter == 'x' || letter == 'X' || letter == 'p') ? 16 : 10;
    size_t digitCount = size_t(std::to_chars(digits, digits + sizeof digits, magnitude, base).ptr - digits);
    if (letter == 'X') {
        for (size_t k = 0; k < digitCount; ++k) {
            if (digits[k] >= 'a') digits[k] = char(digits[k] - 'a' + 'A');
        }
    }
    if (precision == 0 && magnitude == 0 && letter != 'p') digitCount = 0;

    char sign = 0;
    if (letter == 'd') {
        sign = negative ? '-' : (flags & kPlusSign) ? '+' : (flags & kSpaceSign) ? ' ' : 0;
    }
    const char* prefix = "";
    if (letter == 'p' || (letter == 'x' && (flags & kAlternateForm) && magnitude != 0)) prefix = "0x";
    if (letter == 'X' && (flags & kAlternateForm) && magnitude != 0) prefix = "0X";
    bool zeroPad = precision < 0 && (flags & kZeroPad) && !(flags & kLeftJustify);
    if (letter == 'o' && (flags & kAlternateForm) && (digitCount == 0 || digits[0] != '0')) {
        precision = std::max(precision, int(digitCount) + 1);  // the alternate form starts with a 0
    }
    size_t prefixLength = (sign != 0 ? 1 : 0) + std::strlen(prefix);
    size_t zeros = precision > int(digitCount) ? size_t(precision) - digitCount : 0;
    if (zeroPad && width > 0 && size_t(width) > prefixLength + digitCount) {
        zeros = std::max(zeros, size_t(width) - prefixLength - digitCount);
    }
    size_t total = prefixLength + zeros + digitCount;
    size_t padding = width > 0 && size_t(width) > total ? size_t(width) - total : 0;

    size_t start = text.size();
    text.resize(start + total + padding);
    char16_t* out = text.data() + start;
    if (!(flags & kLeftJustify)) out = std::fill_n(out, padding, u' ');
    if (sign != 0) *out++ = char16_t(sign);
    for (const char* p = prefix; *p != 0; ++p) *out++ = char16_t(*p);
    out = std::fill_n(out, zeros, u'0');
    out = std::copy(digits, digits + digitCount, out);
    if (flags & kLeftJustify) std::fill_n(out, padding, u' ');
}

// %f %F %e %E %g %G of a double without the # flag. std::to_chars with a
// precision produces the characters printf produces in the C locale, at a
// fraction of the cost; sign, padding and upper case are added here. Returns false,
// having appended nothing, when the result would not fit the local buffer.
bool appendFloatingWithToChars(std::u16string& text, char letter, double value, uint8_t flags, int width,
                               int precision) {
    std::chars_format style;
    switch (letter) {
        case 'f':
        case 'F':
            style = std::chars_format::fixed;
            break;
        case 'e':
        case 'E':
            style = std::chars_format::scientific;
            break;
        case 'g':
        case 'G':
            style = std::chars_format::general;
            break;
        default:
            return false;
    }
    if (flags & kAlternateForm) return false;
    char digits[128];
    auto [end, error] =
        std::to_chars(digits, digits + sizeof digits, std::fabs(value), style, precision < 0 ? 6 : precision);
    if (error != std::errc()) return false;
    size_t digitCount = size_t(end - digits);
    bool upper = letter == 'F' || letter == 'E' || letter == 'G';

    char sign = std::signbit(value) ? '-' : (flags & kPlusSign) ? '+' : (flags & kSpaceSign) ? ' ' : 0;
    size_t total = (sign != 0 ? 1 : 0) + digitCount;
    size_t padding = width > 0 && size_t(width) > total ? size_t(width) - total : 0;
    // Zeros go between the sign and the digits; infinities and NaNs are
    // padded with spaces whatever the flags say.
    bool zeros = (flags & kZeroPad) && !(flags & kLeftJustify) && std::isfinite(value);

    size_t start = text.size();
    text.resize(start + total + padding);
    char16_t* out = text.data() + start;
    if (!(flags & kLeftJustify) && !zeros) out = std::fill_n(out, padding, u' ');
    if (sign != 0) *out++ = char16_t(sign);
    if (zeros) out = std::fill_n(out, padding, u'0');
    for (size_t k = 0; k < digitCount; ++k) {
        char c = digits[k];
        *out++ = char16_t(upper && c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
    }
    if (flags & kLeftJustify) std::fill_n(out, padding, u' ');
    return true;
}

// The text of one format call: a buffer kept per thread so that formatting
// allocates nothing but the result once the buffer has grown. A %@ whose
// description formats in turn finds the buffer taken and uses a new one.
class OutputText {
public:
    OutputText() : spare_(spare()) {
        builder_.text().swap(spare_);
        builder_.text().clear();
    }
    ~OutputText() {
        constexpr size_t kLargestKept = 16384;
        if (builder_.text().capacity() <= kLargestKept && spare_.capacity() < builder_.text().capacity()) {
            builder_.text().swap(spare_);
        }
    }
    OutputText(const OutputText&) = delete;
    OutputText& operator=(const OutputText&) = delete;

    TextBuilder& builder() { return builder_; }
    std::u16string& text() { return builder_.text(); }

private:
    static std::u16string& spare() {
        thread_local std::u16string buffer;
        return buffer;
    }
    std::u16string& spare_;
    TextBuilder builder_;
};

// The NSDecimalSeparator entry of a format-options dictionary, or NULL. Any
// other kind of options object asks for nothing here.
CFStringRef decimalSeparatorOption(CFDictionaryRef formatOptions) {
    if (!isA(formatOptions, kCFDictionaryTypeID)) return nullptr;
    CFTypeRef value = CFDictionaryGetValue(formatOptions, CFSTR("NSDecimalSeparator"));
    return isA(value, kCFStringTypeID) ? static_cast<CFStringRef>(value) : nullptr;
}

class FormatRenderer {
public:
    FormatRenderer(OutputText& output, CFDictionaryRef formatOptions,
                   const ScratchArray<Argument, kInlineArguments>& arguments)
        : text_(output.text()), builder_(output.builder()), formatOptions_(formatOptions), arguments_(arguments) {}

    template <typename Unit>
    void render(const Unit* format, CFIndex length, const ScratchArray<Directive, kInlineDirectives>& directives,
                size_t count) {
        CFIndex literalStart = 0;
        for (size_t k = 0; k < count; ++k) {
            const Directive& directive = directives[k];
            appendLiteral(format + literalStart, directive.begin - literalStart);
            convert(directive);
            literalStart = directive.end;
        }
        appendLiteral(format + literalStart, length - literalStart);
    }

private:
    void appendLiteral(const uint8_t* bytes, CFIndex length) {
        size_t start = text_.size();
        text_.resize(start + size_t(length));
        for (CFIndex k = 0; k < length; ++k) text_[start + size_t(k)] = char16_t(bytes[k]);
    }
    void appendLiteral(const UniChar* units, CFIndex length) { text_.append(units, size_t(length)); }

    const Argument& argument(int32_t slot) const { return arguments_[size_t(slot)]; }

    void convert(const Directive& directive) {
        uint8_t flags = directive.flags;
        int width = directive.width;
        int precision = directive.precision;
        if (directive.widthArgument != kNoArgument) {
            int64_t value = int32_t(integerOf(argument(directive.widthArgument)));
            // A negative width from an argument means left-justified.
            if (value < 0) flags |= kLeftJustify;
            width = int(std::min<int64_t>(value < 0 ? -value : value, INT32_MAX));
        }
        if (directive.precisionArgument != kNoArgument) {
            int64_t value = int32_t(integerOf(argument(directive.precisionArgument)));
            precision = value < 0 ? kNoValue : int(value);
        }

        switch (directive.conversion) {
            case Conversion::Nothing:
            case Conversion::Count:
                break;
            case Conversion::Literal:
                text_.push_back(directive.literal);
                break;
            case Conversion::Object:
                appendObject(pointerOf(argument(directive.valueArgument)));
                break;
            case Conversion::Signed: {
                int64_t value = integerOf(argument(directive.valueArgument));
                switch (directive.size) {
                    case ValueSize::Char:
                        value = int8_t(value);
                        break;
                    case ValueSize::Short:
                        value = int16_t(value);
                        break;
                    case ValueSize::Default:
                        value = int32_t(value);
                        break;
                    default:
                        break;
                }
                uint64_t magnitude = value < 0 ? uint64_t(-(value + 1)) + 1 : uint64_t(value);
                appendInteger(text_, magnitude, value < 0, directive.letter, flags, width, precision);
                break;
            }
            case Conversion::Unsigned: {
                uint64_t value = uint64_t(integerOf(argument(directive.valueArgument)));
                switch (directive.size) {
                    case ValueSize::Char:
                        value = uint8_t(value);
                        break;
                    case ValueSize::Short:
                        value = uint16_t(value);
                        break;
                    case ValueSize::Default:
                        value = uint32_t(value);
                        break;
                    default:
                        break;
                }
                appendInteger(text_, value, false, directive.letter, flags, width, precision);
                break;
            }
            case Conversion::Pointer: {
                auto address = uint64_t(reinterpret_cast<uintptr_t>(pointerOf(argument(directive.valueArgument))));
                appendInteger(text_, address, false, 'p', flags & (kLeftJustify | kZeroPad), width, precision);
                break;
            }
            case Conversion::Floating:
                appendFloating(directive, argument(directive.valueArgument), flags, width, precision);
                break;
            case Conversion::Char: {
                // One byte, read as Latin-1; a NUL ends the text as it would
                // end a C string.
                auto byte = uint8_t(integerOf(argument(directive.valueArgument)));
                if (byte != 0) {
                    size_t start = text_.size();
                    text_.push_back(char16_t(byte));
                    padField(text_, start, width, flags);
                } else if (!(flags & kLeftJustify) && width > 1) {
                    text_.append(size_t(width) - 1, u' ');  // the padding before the NUL stays
                }
                break;
            }
            case Conversion::Unit:
                text_.push_back(UniChar(integerOf(argument(directive.valueArgument))));
                break;
            case Conversion::CString:
                appendCString(static_cast<const char*>(pointerOf(argument(directive.valueArgument))), flags, width,
                              precision);
                break;
            case Conversion::UnitString:
                appendUnitString(static_cast<const UniChar*>(pointerOf(argument(directive.valueArgument))), flags, width,
                                 precision);
                break;
        }
    }

    void appendObject(const void* object) {
        if (isA(object, kCFStringTypeID)) {
            // A string's formatting description is its text: copy it
            // without making a string first.
            builder_.string(static_cast<CFStringRef>(object));
        } else {
            builder_.formattingDescription(object, formatOptions_);
        }
    }

    void appendCString(const char* bytes, uint8_t flags, int width, int precision) {
        size_t start = text_.size();
        if (bytes == nullptr) {
            builder_.ascii("(null)");
        } else {
            size_t length = precision >= 0 ? strnlen(bytes, size_t(precision)) : std::strlen(bytes);
            if (!decodeUTF8(reinterpret_cast<const uint8_t*>(bytes), length, text_)) {
                text_.resize(start);  // text that is not UTF-8 appends nothing
                return;
            }
        }
        padField(text_, start, width, flags);
    }

    void appendUnitString(const UniChar* units, uint8_t flags, int width, int precision) {
        size_t start = text_.size();
        if (units == nullptr) {
            builder_.ascii("(null)");
        } else {
            size_t length = 0;
            size_t limit = precision >= 0 ? size_t(precision) : SIZE_MAX;
            while (length < limit && units[length] != 0) ++length;
            text_.append(units, length);
        }
        padField(text_, start, width, flags);
    }

    void appendFloating(const Directive& directive, const Argument& value, uint8_t flags, int width, int precision) {
        size_t start = text_.size();
        if (value.type == ArgumentType::LongDouble ||
            !appendFloatingWithToChars(text_, directive.letter, value.type == ArgumentType::Double ? value.real : 0.0, flags,
                                       width, precision)) {
            appendPrintfFloating(directive.letter, value, flags, width, precision);
        }
        applyDecimalSeparator(start);
    }

    // Everything the quick path leaves: %a, the # flag, long double and
    // very long results, through the C library in the C locale.
    void appendPrintfFloating(char letter, const Argument& value, uint8_t flags, int width, int precision) {
        char format[32];
        char* p = format;
        *p++ = '%';
        if (flags & kLeftJustify) *p++ = '-';
        if (flags & kPlusSign) *p++ = '+';
        if (flags & kSpaceSign) *p++ = ' ';
        if (flags & kZeroPad) *p++ = '0';
        if (flags & kAlternateForm) *p++ = '#';
        if (width > 0) p = std::to_chars(p, format + sizeof format, width).ptr;
        if (precision >= 0) {
            *p++ = '.';
            p = std::to_chars(p, format + sizeof format, precision).ptr;
        }
        bool isLong = value.type == ArgumentType::LongDouble;
        if (isLong) *p++ = 'L';
        *p++ = letter;
        *p = 0;
        if (isLong) {
            builder_.format(format, value.longReal);
        } else {
            builder_.format(format, value.type == ArgumentType::Double ? value.real : 0.0);
        }
    }

    void applyDecimalSeparator(size_t start) {
        if (!separatorLookedUp_) {
            separator_ = decimalSeparatorOption(formatOptions_);
            separatorLookedUp_ = true;
        }
        if (separator_ == nullptr) return;
        size_t point = text_.find(u'.', start);
        if (point == std::u16string::npos) return;
        std::u16string replacement = unitsOf(separator_);
        text_.replace(point, 1, replacement);
    }

    std::u16string& text_;
    TextBuilder& builder_;
    CFDictionaryRef formatOptions_;
    const ScratchArray<Argument, kInlineArguments>& arguments_;
    bool separatorLookedUp_ = false;
    CFStringRef separator_ = nullptr;
};

enum class FormatResult { Text, Empty, Failed };

template <typename Unit>
FormatResult formatUnits(OutputText& output, CFDictionaryRef formatOptions, const Unit* format, CFIndex length,
                         va_list arguments) {
    size_t percentCount = size_t(std::count(format, format + length, Unit('%')));
    if (percentCount == 0) {
        if constexpr (sizeof(Unit) == 1) {
            output.builder().ascii(std::string_view(reinterpret_cast<const char*>(format), size_t(length)));
        } else {
            output.builder().units(format, size_t(length));
        }
        return FormatResult::Text;
    }
    // Every directive starts with a '%' and reads at most three
    // arguments (width, precision, value); positions beyond that cannot
    // belong to this format.
    size_t argumentCapacity = 3 * percentCount + 1;
    ScratchArray<Directive, kInlineDirectives> directives(percentCount);
    ScratchArray<Argument, kInlineArguments> values(argumentCapacity);
    FormatParser parser(directives, values, argumentCapacity);
    switch (parser.parse(format, length)) {
        case ParseOutcome::Overflow:
            reportMisuse("ERROR: Failed to format string: %s %lld is too large",
                         parser.overflowIsPosition() ? "argument position" : "width or precision",
                         static_cast<long long>(parser.overflowValue()));
            return FormatResult::Failed;
        case ParseOutcome::GiveUp:
            return FormatResult::Empty;
        case ParseOutcome::Formatted:
            break;
    }
    readArguments(values, parser.argumentCount(), arguments);
    FormatRenderer(output, formatOptions, values).render(format, length, directives, parser.directiveCount());
    return FormatResult::Text;
}

// Formats into output. A format that is not a string is reported and
// fails.
FormatResult formatInto(OutputText& output, CFDictionaryRef formatOptions, CFStringRef format, va_list arguments,
                        const char* caller) {
    if (!isA(format, kCFStringTypeID)) {
        reportMisuse("CFString: %s(): the format is not a string", caller);
        return FormatResult::Failed;
    }
    try {
        if (isMutableString(format)) {
            // A description called for %@ could change a mutable format
            // while it is being read: work on a copy.
            std::u16string copy = unitsOf(format);
            return formatUnits(output, formatOptions, copy.data(), CFIndex(copy.size()), arguments);
        }
        return withUnits(format, [&](auto* units, CFIndex length) {
            return formatUnits(output, formatOptions, units, length, arguments);
        });
    } catch (const std::bad_alloc&) {
        reportMisuse("ERROR: Failed to format string: out of memory");
        return FormatResult::Failed;
    }
}

CFStringRef createWithFormat(CFAllocatorRef alloc, CFDictionaryRef formatOptions, CFStringRef format, va_list arguments,
                             const char* caller) {
    OutputText output;
    switch (formatInto(output, formatOptions, format, arguments, caller)) {
        case FormatResult::Failed:
            return nullptr;
        case FormatResult::Empty:
            output.text().clear();
            break;
        case FormatResult::Text:
            break;
    }
    return output.builder().create(alloc);
}

void appendFormat(CFMutableStringRef theString, CFDictionaryRef formatOptions, CFStringRef format, va_list arguments,
                  const char* caller) {
    if (!isA(theString, kCFStringTypeID)) {
        reportMisuse("CFString: %s(): not a string", caller);
        return;
    }
    if (!isMutableString(theString)) {
        reportMisuse("CFString: %s(): Expect mutable string", caller);
        return;
    }
    OutputText output;
    if (formatInto(output, formatOptions, format, arguments, caller) != FormatResult::Text) return;
    const std::u16string& text = output.text();
    replaceUnits(theString, CFRangeMake(CFStringGetLength(theString), 0), text.data(), CFIndex(text.size()), caller);
}

}  // namespace

}  // namespace halvane::detail

CFStringRef CFStringCreateWithFormat(CFAllocatorRef alloc, CFDictionaryRef formatOptions, CFStringRef format, ...) {
    va_list arguments;
    va_start(arguments, format);
    CFStringRef result = createWithFormat(alloc, formatOptions, format, arguments, "CFStringCreateWithFormat");
    va_end(arguments);
    return result;
}

CFStringRef CFStringCreateWithFormatAndArguments(CFAllocatorRef alloc, CFDictionaryRef formatOptions,
                                                 CFStringRef format, va_list arguments) {
    return createWithFormat(alloc, formatOptions, format, arguments, "CFStringCreateWithFormatAndArguments");
}

void CFStringAppendFormat(CFMutableStringRef theString, CFDictionaryRef formatOptions, CFStringRef format, ...) {
    va_list arguments;
    va_start(arguments, format);
    appendFormat(theString, formatOptions, format, arguments, "CFStringAppendFormat");
    va_end(arguments);
}

void CFStringAppendFormatAndArguments(CFMutableStringRef theString, CFDictionaryRef formatOptions, CFStringRef format,
                                      va_list arguments) {
    appendFormat(theString, formatOptions, format, arguments, "CFStringAppendFormatAndArguments");
}
