// The text forms of the XML scalars: <integer>, <real> and <date>.
#include "CFGregorian.h"
#include "CFPropertyListInternal.h"
#include "CFStringInternal.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace halvane::detail {

ParsedInteger parseXMLInteger(std::string_view t) {
    ParsedInteger result;
    if (t.empty()) {
        result.problem = IntegerProblem::kEmpty;
        return result;
    }
    size_t i = 0;
    while (i < t.size() && isXMLSpace(t[i])) ++i;
    if (i < t.size() && (t[i] == '-' || t[i] == '+')) result.negative = t[i++] == '-';
    while (i < t.size() && isXMLSpace(t[i])) ++i;
    unsigned base = 10;
    if (i + 1 < t.size() && t[i] == '0' && (t[i + 1] == 'x' || t[i + 1] == 'X')) {
        base = 16;
        i += 2;
    }
    if (i == t.size()) {
        result.problem = IntegerProblem::kIncomplete;
        result.position = i;
        return result;
    }
    bool overflow = false;
    for (; i < t.size(); ++i) {
        char c = t[i];
        unsigned digit;
        if (c >= '0' && c <= '9') {
            digit = unsigned(c - '0');
        } else if ((c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F')) {
            if (base == 10) {
                result.problem = IntegerProblem::kHexDigitInDecimal;
                result.position = i;
                return result;
            }
            digit = unsigned((c | 0x20) - 'a' + 10);
        } else {
            result.problem = IntegerProblem::kUnknownCharacter;
            result.position = i;
            return result;
        }
        if (result.magnitude > (UINT64_MAX - digit) / base) overflow = true;
        result.magnitude = result.magnitude * base + digit;
    }
    constexpr uint64_t kMostNegative = uint64_t(1) << 63;
    if (result.negative && (overflow || result.magnitude > kMostNegative)) {
        result.problem = IntegerProblem::kUnderflow;
    } else if (overflow) {
        result.problem = IntegerProblem::kOverflow;
    }
    return result;
}

bool parseXMLReal(std::string_view t, double& value) {
    struct Special {
        const char* text;
        double value;
    };
    static constexpr Special kSpecials[] = {
        {"nan", NAN},           {"inf", HUGE_VAL},        {"+inf", HUGE_VAL},        {"-inf", -HUGE_VAL},
        {"infinity", HUGE_VAL}, {"+infinity", HUGE_VAL}, {"-infinity", -HUGE_VAL},
    };
    if (t.size() <= 9) {
        char lower[10] = {};
        for (size_t i = 0; i < t.size(); ++i) lower[i] = char(t[i] >= 'A' && t[i] <= 'Z' ? t[i] + 32 : t[i]);
        for (const Special& special : kSpecials) {
            if (std::strcmp(lower, special.text) == 0 && std::strlen(special.text) == t.size()) {
                value = special.value;
                return true;
            }
        }
    }
    size_t i = 0;
    while (i < t.size() && (isXMLSpace(t[i]) || t[i] == '\v' || t[i] == '\f')) ++i;
    t.remove_prefix(i);
    if (t.empty() || t.find_first_not_of("0123456789+-.eE") != std::string_view::npos) return false;
    // from_chars takes no '+' sign; strtod, which defines the form, does.
    std::string_view number = t;
    if (number[0] == '+') {
        number.remove_prefix(1);
        if (number.empty() || number[0] == '+' || number[0] == '-') return false;
    }
    auto [end, status] = std::from_chars(number.data(), number.data() + number.size(), value);
    if (end != number.data() + number.size()) return false;
    if (status == std::errc::result_out_of_range) {
        // Beyond the range of a double: strtod's infinity or tiny value, as
        // the form has always read.
        std::string copy(t);
        value = strtod_l(copy.c_str(), nullptr, cLocale());
        return true;
    }
    return status == std::errc();
}

bool parseXMLDate(std::string_view t, CFAbsoluteTime& time) {
    size_t i = 0;
    bool negative = !t.empty() && t[0] == '-';
    if (negative) ++i;
    // Twelve digits go beyond the years any date can be written for.
    int64_t year = 0;
    size_t digits = 0;
    while (i < t.size() && t[i] >= '0' && t[i] <= '9') {
        if (++digits > 12) return false;
        year = year * 10 + (t[i++] - '0');
    }
    if (digits == 0) return false;
    auto twoDigits = [&](char before, int& field) {
        if (i + 3 > t.size() || t[i] != before) return false;
        char a = t[i + 1], b = t[i + 2];
        if (a < '0' || a > '9' || b < '0' || b > '9') return false;
        field = (a - '0') * 10 + (b - '0');
        i += 3;
        return true;
    };
    int month, day, hour, minute, second;
    if (!twoDigits('-', month) || !twoDigits('-', day) || !twoDigits('T', hour) || !twoDigits(':', minute) ||
        !twoDigits(':', second)) {
        return false;
    }
    if (i + 1 != t.size() || t[i] != 'Z') return false;
    DateTimeFields fields{negative ? -year : year, month, day, hour, minute, double(second)};
    time = absoluteTimeFromDateTime(fields);
    // Only times the writer can write back are read.
    DateTimeFields check;
    return dateTimeFromAbsoluteTime(time, check);
}

}  // namespace halvane::detail
