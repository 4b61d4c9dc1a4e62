// CFStringCreateWithFormat and friends: printf conversions compared with the
// C library in the C locale, the object conversion %@, the conversions this
// layer handles itself (%s %S %c %C %p %n), positional arguments and the
// rules for formats that cannot be honoured.
#include "CFTestSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cfloat>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

using namespace cftest;

namespace {

// The units of the formatted string, or "<NULL>" when formatting failed.
std::u16string formatted(CFStringRef format, ...) {
    va_list arguments;
    va_start(arguments, format);
    CFStringRef s = CFStringCreateWithFormatAndArguments(nullptr, nullptr, format, arguments);
    va_end(arguments);
    if (s == nullptr) return u"<NULL>";
    std::u16string text = units(s);
    CFRelease(s);
    return text;
}

std::string formattedASCII(CFStringRef format, ...) {
    va_list arguments;
    va_start(arguments, format);
    CFStringRef s = CFStringCreateWithFormatAndArguments(nullptr, nullptr, format, arguments);
    va_end(arguments);
    if (s == nullptr) return "<NULL>";
    std::string text = ascii(s);
    CFRelease(s);
    return text;
}

// The same conversion through the C library (the test runs in the C
// locale) and through CFStringCreateWithFormat. The compiler's format
// checks are off for the reference call: odd flag combinations are part of
// what is compared.
#define EXPECT_LIKE_PRINTF(format, ...)                                                                          \
    do {                                                                                                         \
        char expected[512];                                                                                      \
        _Pragma("GCC diagnostic push") _Pragma("GCC diagnostic ignored \"-Wformat\"")                            \
            std::snprintf(expected, sizeof expected, format, __VA_ARGS__);                                       \
        _Pragma("GCC diagnostic pop") EXPECT_EQ(formattedASCII(CFSTR(format), __VA_ARGS__), expected) << format; \
    } while (0)

std::string hex(const void* p) {
    char text[32];
    std::snprintf(text, sizeof text, "0x%lx", (unsigned long)(uintptr_t)p);
    return text;
}

// Objects of registered classes for %@.
struct Thing {
    CFRuntimeBase base;
    int value;
};

CFDictionaryRef lastFormatOptions = nullptr;

CFStringRef thingFormattingDescription(CFTypeRef cf, CFDictionaryRef formatOptions) {
    lastFormatOptions = formatOptions;
    int value = static_cast<const Thing*>(cf)->value;
    // Formats in turn, from inside a %@ of the outer call.
    return value < 0 ? nullptr : CFStringCreateWithFormat(nullptr, nullptr, CFSTR("thing %d"), value);
}

CFStringRef thingDebugDescription(CFTypeRef cf) {
    return CFStringCreateWithFormat(nullptr, nullptr, CFSTR("<debug thing %d>"), static_cast<const Thing*>(cf)->value);
}

CFRuntimeClass thingClass(const char* name, CFStringRef (*formatting)(CFTypeRef, CFDictionaryRef),
                          CFStringRef (*debug)(CFTypeRef)) {
    CFRuntimeClass cls = {};
    cls.className = name;
    cls.copyFormattingDesc = formatting;
    cls.copyDebugDesc = debug;
    return cls;
}

const CFRuntimeClass describedClass = thingClass("Described", thingFormattingDescription, thingDebugDescription);
const CFRuntimeClass debugOnlyClass = thingClass("DebugOnly", nullptr, thingDebugDescription);
const CFRuntimeClass bareClass = thingClass("Bare", nullptr, nullptr);

Owned<CFTypeRef> newThing(const CFRuntimeClass* cls, int value) {
    static CFTypeID described = _CFRuntimeRegisterClass(&describedClass);
    static CFTypeID debugOnly = _CFRuntimeRegisterClass(&debugOnlyClass);
    static CFTypeID bare = _CFRuntimeRegisterClass(&bareClass);
    CFTypeID typeID = cls == &describedClass ? described : cls == &debugOnlyClass ? debugOnly : bare;
    auto* thing = static_cast<Thing*>(
        const_cast<void*>(_CFRuntimeCreateInstance(nullptr, typeID, sizeof(Thing) - sizeof(CFRuntimeBase), nullptr)));
    if (thing != nullptr) thing->value = value;
    return own<CFTypeRef>(thing);
}

}  // namespace

TEST(StringFormat, IntegerConversionsMatchPrintf) {
    EXPECT_LIKE_PRINTF("%d|%d|%d|%d|%d", 0, 42, -42, INT_MIN, INT_MAX);
    EXPECT_LIKE_PRINTF("[%5d][%-5d][%05d][%+d][% d][%+ d][% 05d]", 42, 42, -42, 42, 42, 42, 42);
    EXPECT_LIKE_PRINTF("[%.3d][%.0d][%+.0d][%8.3d][%-08.3d][%08.3d][%.0d]", 7, 0, 0, -7, 7, 7, 3);
    EXPECT_LIKE_PRINTF("%i %u %u", -9, 4294967295u, -1);
    EXPECT_LIKE_PRINTF("[%x][%X][%#x][%#X][%#x][%o][%#o][%#o][%#.0o][%.0x]", 255, 255, 255, 255, 0, 511, 8, 0, 0, 0);
    EXPECT_LIKE_PRINTF("[%#10x][%#010x][%-#10x][%#.5X][%+x][% u]", 255, 255, 255, 171, 5, 5);
    EXPECT_LIKE_PRINTF("[%#07o][%#012lo][%#-7o][%#7.3o]", 3, 1L, 3, 3);
    // Length modifiers: hh and h cut the value, l ll q j z t read 64 bits.
    EXPECT_LIKE_PRINTF("%hhd %hhu %hhx %hd %hu %hx", 300, -1, 0x1ff, 70000, -1, 0x12345);
    EXPECT_LIKE_PRINTF("%ld %lu %lx %lo", LONG_MIN, ULONG_MAX, 0xdeadbeefcafeUL, 01234567012345670UL);
    EXPECT_LIKE_PRINTF("%lld %llu %llX", LLONG_MIN, ULLONG_MAX, 0xabcdef0123456789ULL);
    EXPECT_LIKE_PRINTF("%jd %zu %zd %td", INTMAX_MIN, SIZE_MAX, (ssize_t)-5, (ptrdiff_t)-6);
    EXPECT_LIKE_PRINTF("%Ld %20lld|%-+20ld|", 1LL << 40, -123456789012LL, 5L);
    // Widths and precisions from arguments; a negative width left-justifies,
    // a negative precision counts as none.
    EXPECT_LIKE_PRINTF("[%*d][%-*d][%*d][%.*d][%.*d][%*.*d]", 5, 42, 5, 42, -5, 42, 3, 7, -1, 7, 6, 3, -7);
    // q is long long as on BSD systems.
    EXPECT_EQ(formattedASCII(CFSTR("%qd %qu"), LLONG_MIN, ULLONG_MAX), "-9223372036854775808 18446744073709551615");
    // %D %U %O are %d %u %o with the same length modifier.
    EXPECT_EQ(formattedASCII(CFSTR("%D %U %O %5D %lD %lU %hO"), -5, 5u, 8, 3, LONG_MIN, ULONG_MAX, 0x10008),
              "-5 5 10     3 -9223372036854775808 18446744073709551615 10");
}

TEST(StringFormat, FloatingConversionsMatchPrintf) {
    EXPECT_LIKE_PRINTF("%f %.2f %10.3f|%-10.3f|%+f|% f|%010.2f", 3.14159, 3.14159, 3.14159, 3.14159, 2.5, 2.5, -3.5);
    EXPECT_LIKE_PRINTF("%e %E %.0e %#.0e %.3e", 12345.678, 0.000123, 12345.0, 12345.0, -1e-300);
    EXPECT_LIKE_PRINTF("%g %G %#g %g %g %.17g", 0.0001234, 1e-10, 1.0, 100000.0, 1e6, 0.1);
    EXPECT_LIKE_PRINTF("%a %A %.2a %a", 1.5, 1.5, 1.0 / 3, -0.0);
    EXPECT_LIKE_PRINTF("%f %F %f %e %5.1f %.f %.0f %#.0f", INFINITY, INFINITY, NAN, -INFINITY, 9.96, 2.5, 3.5, 2.0);
    EXPECT_LIKE_PRINTF("%Lf %Le %Lg %.3La %lf", 1.5L, 123.456L, LDBL_MAX, 1.0L / 3, 2.0);
    EXPECT_LIKE_PRINTF("%*.*f|%-*.*e|%.*g", 10, 2, 3.14159, 12, 1, 2.5, -1, 1.0 / 7);
    // Longer than any small buffer.
    EXPECT_LIKE_PRINTF("%f %.40f", 1e300, 1.0 / 3);
    EXPECT_LIKE_PRINTF("%d %f %d %Lf %d", 1, 2.5, 3, 4.5L, 5);
}

// Every combination of flags, width and precision for each numeric
// conversion, over values that reach the edge cases (zero, negative zero,
// extremes, ties, subnormals, infinities and NaN).
TEST(StringFormat, NumericConversionsMatchPrintfInEveryCombination) {
    const std::string flagSets[] = {"", "-", "+", " ", "0", "#", "-+", " 0", "+0", "#0", "-#", "+ #0"};
    const std::string widths[] = {"", "1", "7", "24"};
    const std::string precisions[] = {"", ".", ".0", ".1", ".5", ".17"};
    const long long integers[] = {0, 1, -1, 7, -42, 255, 65535, 123456789, INT_MIN, INT_MAX, LLONG_MIN, LLONG_MAX};
    const char* integerSizes[] = {"", "hh", "h", "l", "ll", "z"};
    const double reals[] = {0.0,    -0.0,   0.5,  2.5,     0.125,    1.0 / 3,   -1234.5678,
                            1e-300, 5e-324, 1e21, DBL_MAX, INFINITY, -INFINITY, NAN};
    int checked = 0, mismatches = 0;
    auto compare = [&](const std::string& format, const std::string& expected, const std::string& actual) {
        ++checked;
        if (expected != actual && ++mismatches <= 10) {
            ADD_FAILURE() << format << ": printf gives '" << expected << "', CF gives '" << actual << "'";
        }
    };
    char expected[512];
    for (const std::string& flags : flagSets) {
        for (const std::string& width : widths) {
            for (const std::string& precision : precisions) {
                for (char letter : std::string("diuxXo")) {
                    for (size_t k = 0; k < std::size(integers); ++k) {
                        std::string size = integerSizes[k % std::size(integerSizes)];
                        std::string format = "%" + flags + width + precision + size + letter;
                        auto cfFormat = string(std::u16string(format.begin(), format.end()));
                        bool wide = size == "l" || size == "ll" || size == "z";
                        if (wide) {
                            std::snprintf(expected, sizeof expected, format.c_str(), integers[k]);
                            compare(format, expected, formattedASCII(cfFormat, integers[k]));
                        } else {
                            std::snprintf(expected, sizeof expected, format.c_str(), int(integers[k]));
                            compare(format, expected, formattedASCII(cfFormat, int(integers[k])));
                        }
                    }
                }
                for (char letter : std::string("fFeEgGaA")) {
                    std::string format = "%" + flags + width + precision + letter;
                    auto cfFormat = string(std::u16string(format.begin(), format.end()));
                    for (double value : reals) {
                        std::snprintf(expected, sizeof expected, format.c_str(), value);
                        compare(format, expected, formattedASCII(cfFormat, value));
                    }
                }
            }
        }
    }
    EXPECT_EQ(mismatches, 0) << "of " << checked;
    EXPECT_EQ(checked, 12 * 4 * 6 * (6 * 12 + 8 * 14));
}

TEST(StringFormat, PointersAreRenderedWithAnExplicitPrefix) {
    const void* p = reinterpret_cast<const void*>(uintptr_t(0x7ffee4b0));
    EXPECT_EQ(formattedASCII(CFSTR("%p"), p), "0x7ffee4b0");
    EXPECT_EQ(formattedASCII(CFSTR("[%14p][%-14p][%014p][%.10p]"), p, p, p, p),
              "[    0x7ffee4b0][0x7ffee4b0    ][0x00007ffee4b0][0x007ffee4b0]");
    EXPECT_EQ(formattedASCII(CFSTR("%p [%5p] [%-5p] %.0p"), nullptr, nullptr, nullptr, nullptr),
              "0x0 [  0x0] [0x0  ] 0x0");
    // Sign flags mean nothing for an address.
    EXPECT_EQ(formattedASCII(CFSTR("%+p % p"), p, p), "0x7ffee4b0 0x7ffee4b0");
}

TEST(StringFormat, CharactersAndUnits) {
    EXPECT_EQ(formatted(CFSTR("%c%c|%3c|%-3c|%03c"), 'a', 0xE9, 'b', 'c', 'd'), u"aé|  b|c  |  d");
    // %c reads one byte: the value is cut to eight bits, as Latin-1.
    EXPECT_EQ(formatted(CFSTR("%c"), 0x1FC), u"ü");
    // A NUL character ends the field as it ends a C string.
    EXPECT_EQ(formatted(CFSTR("[%c][%3c][%-3c]"), 0, 0, 0), u"[][  ][]");
    // %C is exactly one UTF-16 unit: no width, surrogates kept, NUL kept.
    EXPECT_EQ(formatted(CFSTR("%C|%5C|%C%C"), 0x263A, u'x', 0xD83D, 0xDE00), u"☺|x|\U0001F600");
    EXPECT_EQ(formatted(CFSTR("a%Cb"), 0), std::u16string(u"a\0b", 3));
}

TEST(StringFormat, CStringsAreUTF8) {
    EXPECT_EQ(formatted(CFSTR("%s, %s!"), "Gr\u00FC\u00DFe", "\u4E16\U0001F600"), u"Grüße, 世\U0001F600!");
    // Precision counts bytes and stops earlier at a NUL.
    EXPECT_EQ(formattedASCII(CFSTR("[%.3s][%.10s][%.0s][%.5s]"), "abcdef", "ab", "abc", "ab\0cd"), "[abc][ab][][ab]");
    // Width pads with spaces; only - counts among the flags.
    EXPECT_EQ(formattedASCII(CFSTR("[%8s][%-8s][%08s][%+s][% #s]"), "abc", "abc", "abc", "x", "y"),
              "[     abc][abc     ][     abc][x][y]");
    // The width counts the characters of the result, not the bytes.
    EXPECT_EQ(formatted(CFSTR("[%4s]"), "\xC3\xA9"), u"[   é]");
    // Text that is not UTF-8 appends nothing, padding included; a precision
    // that cuts a character makes the text invalid too.
    EXPECT_EQ(formattedASCII(CFSTR("[%s][%5s][%s]"), "a\xFF", "\xC3", "\xED\xA0\x80"), "[][][]");
    EXPECT_EQ(formatted(CFSTR("[%.2s][%.3s]"), "h\xC3\xA9", "h\xC3\xA9"), u"[][hé]");
    EXPECT_EQ(formattedASCII(CFSTR("%s [%8s] [%-7s]"), nullptr, nullptr, nullptr), "(null) [  (null)] [(null) ]");
}

TEST(StringFormat, UnitStrings) {
    const UniChar text[] = {u'w', u'ö', u'r', 0xD83D, 0xDE00, 0};
    EXPECT_EQ(formatted(CFSTR("%S|%.2S|%8S|%-7S|"), text, text, text, u"ab"),
              u"wör\U0001F600|wö|   wör\U0001F600|ab     |");
    const UniChar early[] = {u'a', 0, u'b', 0};
    EXPECT_EQ(formatted(CFSTR("%S %S"), early, static_cast<const UniChar*>(nullptr)), u"a (null)");
}

TEST(StringFormat, ObjectsUseTheirFormattingDescription) {
    EXPECT_EQ(formattedASCII(CFSTR("%@ : %d items"), CFSTR("list"), 3), "list : 3 items");
    EXPECT_EQ(formatted(CFSTR("<%@>"), CFSTR("caf\xC3\xA9 \xE2\x82\xAC")), u"<café €>");
    EXPECT_EQ(formattedASCII(CFSTR("%@ and %@"), nullptr, CFSTR("x")), "(null) and x");
    // Width, precision and flags do nothing for %@.
    EXPECT_EQ(formattedASCII(CFSTR("[%10@][%-10.2@][%+05@]"), CFSTR("abc"), CFSTR("abc"), CFSTR("abc")),
              "[abc][abc][abc]");

    auto mutableText = own(CFStringCreateMutable(nullptr, 0));
    CFStringAppend(mutableText, CFSTR("grows"));
    EXPECT_EQ(formattedASCII(CFSTR("%@"), mutableText.get()), "grows");

    auto described = newThing(&describedClass, 5);
    auto debugOnly = newThing(&debugOnlyClass, 6);
    auto declining = newThing(&describedClass, -1);  // its formatting callback returns NULL
    auto bare = newThing(&bareClass, 7);
    ASSERT_TRUE(described && debugOnly && declining && bare);
    EXPECT_EQ(formattedASCII(CFSTR("%@|%@|%@"), described.get(), debugOnly.get(), declining.get()),
              "thing 5|<debug thing 6>|<debug thing -1>");
    EXPECT_EQ(formattedASCII(CFSTR("%@"), bare.get()),
              "<Bare " + hex(bare.get()) + " [" + hex(kCFAllocatorSystemDefault) + "]>");
    // Formatting takes no reference it keeps.
    EXPECT_EQ(CFGetRetainCount(described), 1);
    EXPECT_EQ(CFGetRetainCount(mutableText), 1);

    // The options reach the class's callback unchanged.
    CFDictionaryRef options = reinterpret_cast<CFDictionaryRef>(CFSTR("options"));
    auto withOptions = own(CFStringCreateWithFormat(nullptr, options, CFSTR("%@"), described.get()));
    EXPECT_EQ(ascii(withOptions), "thing 5");
    EXPECT_EQ(lastFormatOptions, options);
}

TEST(StringFormat, ThreadsFormatIndependently) {
    auto described = newThing(&describedClass, 11);
    ASSERT_TRUE(described);
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 500; ++i) {
                // The object's description formats too, inside this call.
                std::string expected = "[" + std::to_string(t) + "/" + std::to_string(i) + "] thing 11 1.5";
                if (formattedASCII(CFSTR("[%d/%d] %@ %.1f"), t, i, described.get(), 1.5) != expected) ++wrong;
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(CFGetRetainCount(described), 1);
}

TEST(StringFormat, PositionalArgumentsCanBeReordered) {
    EXPECT_EQ(formattedASCII(CFSTR("%2$d %1$d"), 1, 2), "2 1");
    EXPECT_EQ(formattedASCII(CFSTR("%2$s-%1$d-%2$s"), 7, "str"), "str-7-str");
    auto object = string(u"x");
    EXPECT_EQ(formattedASCII(CFSTR("%1$@ %1$@ %1$@"), object.get()), "x x x");
    EXPECT_EQ(CFGetRetainCount(object), 1);
    // Mixed types are read in order whatever order the format names them.
    EXPECT_EQ(formattedASCII(CFSTR("%3$.1f %1$lld %2$s %4$c"), 1LL << 40, "two", 3.25, 'z'), "3.2 1099511627776 two z");
    // Widths and precisions by position.
    EXPECT_EQ(formattedASCII(CFSTR("[%1$*2$d][%1$-*2$d][%3$.*2$f]"), 42, 5, 3.14159), "[   42][42   ][3.14159]");
    EXPECT_EQ(formattedASCII(CFSTR("[%2$*1$.*3$f]"), 8, 3.14159, 2), "[    3.14]");
    // A position no directive names is stepped over.
    EXPECT_EQ(formattedASCII(CFSTR("%3$d %1$d"), 1, 2, 3), "3 1");
}

TEST(StringFormat, PercentUnknownConversionsAndTheEnd) {
    EXPECT_EQ(formattedASCII(CFSTR("100%% [%5%] %-%")), "100% [%] %");
    // An unknown conversion prints its character and reads no argument.
    EXPECT_EQ(formattedASCII(CFSTR("%k %'d %5y %lw %*v|%d"), 9), "k 'd y w v|9");
    EXPECT_EQ(formatted(CFSTR("%\xC3\xA9|%\xF0\x9F\x98\x80")), u"é|\U0001F600");
    // A % at the end prints nothing, whatever came after it.
    EXPECT_EQ(formattedASCII(CFSTR("abc%")), "abc");
    EXPECT_EQ(formattedASCII(CFSTR("abc%-5.2l")), "abc");
    EXPECT_EQ(formattedASCII(CFSTR("%d%"), 4), "4");
    EXPECT_EQ(formattedASCII(CFSTR("%1$")), "");
    // %n consumes its pointer and writes nothing.
    int count = 7;
    EXPECT_EQ(formattedASCII(CFSTR("ab%ncd%d"), &count, 5), "abcd5");
    EXPECT_EQ(count, 7);
}

TEST(StringFormat, FormatTextMayBeAnyUnicode) {
    EXPECT_EQ(formatted(CFSTR("Gr\u00F6\u00DFe: %d \u20AC, %@ \U0001F600"), 5, CFSTR("ok")),
              u"Größe: 5 €, ok \U0001F600");
    auto wide = string(u"ä%2$@·%1$d");
    EXPECT_EQ(formatted(wide, 3, CFSTR("ü")), u"äü·3");
    // A mutable format is read as it was at the call.
    auto mutableFormat = own(CFStringCreateMutable(nullptr, 0));
    CFStringAppend(mutableFormat, CFSTR("<%d>"));
    EXPECT_EQ(formattedASCII(mutableFormat, 8), "<8>");
    EXPECT_EQ(formattedASCII(CFSTR("no conversions")), "no conversions");
    EXPECT_EQ(formattedASCII(CFSTR("a\0b%d"), 1), std::string("a\0b1", 4));
}

TEST(StringFormat, ManyDirectivesAndLongResults) {
    std::string expected;
    for (int k = 0; k < 40; ++k) expected += std::to_string(k) + ",";
    EXPECT_EQ(formattedASCII(CFSTR("%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,"
                                   "%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,"),
                             0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24,
                             25, 26, 27, 28, 29, 30, 31, 32, 33, 34, 35, 36, 37, 38, 39),
              expected);
    std::string wide = formattedASCII(CFSTR("%40000d|%.30000d"), 1, 2);
    EXPECT_EQ(wide.size(), 40000u + 1 + 30000u);
    EXPECT_EQ(wide.substr(39998, 4), " 1|0");
    EXPECT_EQ(wide.back(), '2');
}

TEST(StringFormat, OutOfRangePositionsGiveAnEmptyString) {
    // One % allows positions up to 3 * 1 + 1 = 4.
    auto empty = own(CFStringCreateWithFormat(nullptr, nullptr, CFSTR("a%5$db"), 1, 2, 3, 4, 5));
    ASSERT_TRUE(empty);
    EXPECT_EQ(CFStringGetLength(empty), 0);
    EXPECT_EQ(CFGetRetainCount(empty), kImmortal);
    EXPECT_EQ(formattedASCII(CFSTR("%1$d %9$d"), 1, 2, 3, 4, 5, 6, 7, 8, 9), "");
    EXPECT_EQ(formattedASCII(CFSTR("%1$d %*9$d"), 1, 2, 3, 4, 5, 6, 7, 8, 9), "");
    EXPECT_EQ(formattedASCII(CFSTR("%1$d %7$d"), 1, 2, 3, 4, 5, 6, 7), "1 7");
    EXPECT_EQ(formattedASCII(CFSTR("%4$d"), 1, 2, 3, 4), "4");
}

TEST(StringFormat, OverflowsFailWithALogLine) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(CFStringCreateWithFormat(nullptr, nullptr, CFSTR("%200$d"), 1), nullptr);
    std::string log = testing::internal::GetCapturedStderr();
    EXPECT_EQ(log.rfind("ERROR: Failed to format string: ", 0), 0u) << log;
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 1);

    // Position 128 with enough %s that it is not merely out of range.
    std::string many = "%128$d";
    for (int k = 0; k < 43; ++k) many += "%%";
    auto manyFormat = string(std::u16string(many.begin(), many.end()));
    testing::internal::CaptureStderr();
    EXPECT_EQ(CFStringCreateWithFormat(nullptr, nullptr, manyFormat, 1), nullptr);
    EXPECT_EQ(CFStringCreateWithFormat(nullptr, nullptr, CFSTR("%2147483648d"), 1), nullptr);
    EXPECT_EQ(CFStringCreateWithFormat(nullptr, nullptr, CFSTR("%.99999999999f"), 1.0), nullptr);
    EXPECT_EQ(CFStringCreateWithFormat(nullptr, nullptr, CFSTR("%*200$d"), 1), nullptr);
    log = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 4) << log;

    auto target = own(CFStringCreateMutable(nullptr, 0));
    CFStringAppend(target, CFSTR("kept"));
    testing::internal::CaptureStderr();
    CFStringAppendFormat(target, nullptr, CFSTR("%4294967296d"), 1);
    testing::internal::GetCapturedStderr();
    CFStringAppendFormat(target, nullptr, CFSTR("%9$d"), 1);
    EXPECT_EQ(ascii(target), "kept");
}

TEST(StringFormat, AppendFormatExtendsAMutableString) {
    auto target = own(CFStringCreateMutable(nullptr, 0));
    CFStringAppend(target, CFSTR("abc"));
    CFStringAppendFormat(target, nullptr, CFSTR("%d-%@"), 1, CFSTR("x"));
    EXPECT_EQ(ascii(target), "abc1-x");
    // The string may be an argument of its own format.
    CFStringAppendFormat(target, nullptr, CFSTR("|%@|%C"), target.get(), 0x20AC);
    EXPECT_EQ(units(target), u"abc1-x|abc1-x|€");
    // And its own format.
    auto selfFormat = own(CFStringCreateMutable(nullptr, 0));
    CFStringAppend(selfFormat, CFSTR("%d;"));
    CFStringAppendFormat(selfFormat, nullptr, selfFormat, 9);
    EXPECT_EQ(ascii(selfFormat), "%d;9;");

    testing::internal::CaptureStderr();
    CFStringRef immutable = CFSTR("fixed");
    CFStringAppendFormat(const_cast<CFMutableStringRef>(immutable), nullptr, CFSTR("%d"), 1);
    std::string log = testing::internal::GetCapturedStderr();
    EXPECT_EQ(ascii(immutable), "fixed");
    EXPECT_NE(log.find("Expect mutable string"), std::string::npos) << log;
}

TEST(StringFormat, ResultsAndBadArguments) {
    auto s = own(CFStringCreateWithFormat(nullptr, nullptr, CFSTR("n=%d"), 5));
    ASSERT_TRUE(s);
    EXPECT_EQ(CFGetRetainCount(s), 1);
    EXPECT_EQ(CFGetTypeID(s), CFStringGetTypeID());
    EXPECT_EQ(CFStringCreateWithFormat(kCFAllocatorNull, nullptr, CFSTR("n=%d"), 5), nullptr);

    testing::internal::CaptureStderr();
    EXPECT_EQ(CFStringCreateWithFormat(nullptr, nullptr, nullptr, 5), nullptr);
    EXPECT_EQ(CFStringCreateWithFormat(nullptr, nullptr, reinterpret_cast<CFStringRef>(kCFAllocatorSystemDefault)),
              nullptr);
    CFStringAppendFormat(nullptr, nullptr, CFSTR("%d"), 1);
    std::string log = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 3) << log;
}

TEST(StringFormat, NumbersIgnoreTheProcessLocale) {
    const char* chosen = nullptr;
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "fr_FR.utf8"}) {
        if (std::setlocale(LC_NUMERIC, name) != nullptr) {
            chosen = name;
            break;
        }
    }
    if (chosen == nullptr) GTEST_SKIP() << "no locale with a decimal comma (de_DE.UTF-8, fr_FR.UTF-8) is installed";
    char native[32];
    std::snprintf(native, sizeof native, "%.1f", 1.5);
    EXPECT_STREQ(native, "1,5") << chosen;  // the locale is really in force
    std::string text = formattedASCII(CFSTR("%.1f %e %g %a %d %'d"), 1.5, 2.5, 0.25, 1.0, 1234567, 1);
    std::setlocale(LC_NUMERIC, "C");
    EXPECT_EQ(text, "1.5 2.500000e+00 0.25 0x1p+0 1234567 'd");
}

TEST(StringFormat, DecimalSeparatorOption) {
    // Options that are not a dictionary ask for nothing.
    CFDictionaryRef notADictionary = reinterpret_cast<CFDictionaryRef>(CFSTR(","));
    auto plain = own(CFStringCreateWithFormat(nullptr, notADictionary, CFSTR("%.1f"), 1.5));
    EXPECT_EQ(ascii(plain), "1.5");

    const void* keys[] = {CFSTR("NSDecimalSeparator")};
    const void* values[] = {CFSTR(",")};
    auto options = own(
        CFDictionaryCreate(nullptr, keys, values, 1, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    ASSERT_TRUE(options);
    auto localized =
        own(CFStringCreateWithFormat(nullptr, options, CFSTR("%.2f %e %d %g %@"), 3.25, 1.5, 1000, 2.0, CFSTR("a.b")));
    EXPECT_EQ(ascii(localized), "3,25 1,500000e+00 1000 2 a.b");
}
