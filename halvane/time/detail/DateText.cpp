#include <halvane/time/detail/DateText.h>

#include <halvane/time/HVTimeZone.h>
#include <halvane/time/detail/MachineTimeZone.h>

#include <CoreFoundation/CoreFoundation.h>

#include <unicode/gregocal.h>
#include <unicode/timezone.h>

#include <charconv>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace halvane::detail {

namespace {

struct DateFields {
    int32_t year = 0;
    int32_t month = 0;  // 1 to 12
    int32_t day = 0;
    int32_t hour = 0;
    int32_t minute = 0;
    int32_t second = 0;
    int64_t nanosecond = 0;
};

// A Gregorian calendar on the time library's GMT zone when the zone answers
// as GMT, on the machine's zone otherwise; null when none can be made.
std::unique_ptr<icu::Calendar> calendarFor(const HVTimeZone& zone) {
    std::unique_ptr<icu::TimeZone> icuZone(zone.SecondsFromGMT() == 0.0 ? icu::TimeZone::getGMT()->clone()
                                                                         : icu::TimeZone::createDefault());
    if (!icuZone) return nullptr;
    UErrorCode status = U_ZERO_ERROR;
    auto calendar = std::make_unique<icu::GregorianCalendar>(*icuZone, status);
    if (U_FAILURE(status)) return nullptr;
    return calendar;
}

bool splitDate(const HVDate& date, const HVTimeZone& zone, DateFields& fields) {
    std::unique_ptr<icu::Calendar> calendar = calendarFor(zone);
    if (!calendar) return false;
    UErrorCode status = U_ZERO_ERROR;
    calendar->setTime(IcuTimeOfDate(date), status);
    fields.year = calendar->get(UCAL_YEAR, status);
    fields.month = calendar->get(UCAL_MONTH, status) + 1;
    fields.day = calendar->get(UCAL_DATE, status);
    fields.hour = calendar->get(UCAL_HOUR_OF_DAY, status);
    fields.minute = calendar->get(UCAL_MINUTE, status);
    fields.second = calendar->get(UCAL_SECOND, status);
    fields.nanosecond = int64_t(calendar->get(UCAL_MILLISECOND, status)) * 1000000;
    return U_SUCCESS(status);
}

// The calendar is lenient: a day 0 is the last day of the month before.
HVDate dateOfFields(const DateFields& fields, const HVTimeZone& zone) {
    std::unique_ptr<icu::Calendar> calendar = calendarFor(zone);
    if (!calendar) return HVDate();
    calendar->clear();
    int32_t month = fields.month > 0 ? fields.month - 1 : fields.month;
    calendar->set(fields.year, month, fields.day, fields.hour, fields.minute, fields.second);
    UErrorCode status = U_ZERO_ERROR;
    calendar->add(UCAL_MILLISECOND, int32_t(fields.nanosecond / 1000000), status);
    UDate time = calendar->getTime(status);
    if (U_FAILURE(status)) return HVDate();
    return HVDate::DateWithTimeIntervalSince1970(time / 1000.0);
}

// "00%d" (or "0000%d") keeping the last digits, as the formatters pad.
std::string padded(int64_t value, size_t digits) {
    std::string text = std::string(digits, '0') + std::to_string(value);
    return text.substr(text.size() - digits);
}

std::string trimmedText(const HVString& text) {
    if (text.IsNull()) return {};
    CFMutableStringRef copy = CFStringCreateMutableCopy(kCFAllocatorDefault, 0, static_cast<CFStringRef>(text.Ref()));
    if (copy == nullptr) return {};
    CFStringTrimWhitespace(copy);
    HVString trimmed;
    trimmed.AssignAndTakeOwnership(copy);
    return std::string(trimmed);
}

std::vector<std::string_view> partsOf(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    size_t start = 0;
    while (true) {
        size_t end = text.find(separator, start);
        parts.push_back(text.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start));
        if (end == std::string_view::npos) return parts;
        start = end + 1;
    }
}

// A run of digits that fits a 32-bit field.
bool readNumber(std::string_view digits, int32_t& value) {
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string_view::npos) return false;
    auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return error == std::errc() && end == digits.data() + digits.size();
}

// Seconds with an optional fraction: "05" or "05.250".
bool readSeconds(std::string_view text, int32_t& second, int64_t& nanosecond) {
    size_t point = text.find('.');
    if (!readNumber(text.substr(0, point), second)) return false;
    nanosecond = 0;
    if (point == std::string_view::npos) return true;
    std::string_view fraction = text.substr(point + 1);
    if (fraction.empty() || fraction.find_first_not_of("0123456789") != std::string_view::npos) return false;
    // Nine digits of nanoseconds, padded on the right; further digits are
    // below a nanosecond.
    std::string nine(fraction.substr(0, 9));
    nine.resize(9, '0');
    nanosecond = std::stoll(nine);
    return true;
}

bool readDateTime(std::string_view text, DateFields& fields) {
    if (text.empty() || text.find_first_not_of("0123456789 :/-.") != std::string_view::npos) return false;
    size_t gap = text.find(' ');
    std::string_view date = text.substr(0, gap);
    std::string_view time = gap == std::string_view::npos ? std::string_view() : text.substr(gap + 1);
    while (!time.empty() && time.front() == ' ') time.remove_prefix(1);

    std::vector<std::string_view> dateParts = partsOf(date, '/');
    if (dateParts.size() <= 2) dateParts = partsOf(date, '-');
    if (dateParts.size() != 3 || !readNumber(dateParts[0], fields.month) || !readNumber(dateParts[1], fields.day) ||
        !readNumber(dateParts[2], fields.year)) {
        return false;
    }
    if (fields.year < 100) fields.year += 2000;

    if (time.empty()) return true;
    std::vector<std::string_view> timeParts = partsOf(time, ':');
    if (timeParts.size() > 3 || !readNumber(timeParts[0], fields.hour)) return false;
    if (timeParts.size() > 1 && !readNumber(timeParts[1], fields.minute)) return false;
    if (timeParts.size() > 2) return readSeconds(timeParts[2], fields.second, fields.nanosecond);
    return true;
}

}  // namespace

HVString DateTimeText(const HVDate& date, const HVTimeZone& zone) {
    DateFields fields;
    if (date.IsEmpty() || !splitDate(date, zone, fields)) return HVString();
    std::string fraction = std::to_string(fields.nanosecond);
    fraction.resize(3, '0');
    std::string text = padded(fields.month, 2) + "-" + padded(fields.day, 2) + "-" + padded(fields.year, 4) + " " +
                       padded(fields.hour, 2) + ":" + padded(fields.minute, 2) + ":" + padded(fields.second, 2) + "." +
                       fraction;
    return HVString(text.c_str());
}

HVDate DateFromDateTimeText(const HVString& text, const HVTimeZone& zone) {
    DateFields fields;
    if (!readDateTime(trimmedText(text), fields)) return HVDate();
    return dateOfFields(fields, zone);
}

HVDate StartOfDay(const HVDate& date, const HVTimeZone& zone) {
    DateFields fields;
    if (!splitDate(date, zone, fields)) return HVDate();
    DateFields day;
    day.year = fields.year;
    day.month = fields.month;
    day.day = fields.day;
    return dateOfFields(day, zone);
}

}  // namespace halvane::detail
