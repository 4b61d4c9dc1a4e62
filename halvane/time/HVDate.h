// HVDate: an immutable point in time, over a CoreFoundation date: seconds
// since the reference date, 2001-01-01 00:00:00 GMT.
#ifndef HALVANE_TIME_HVDATE_H
#define HALVANE_TIME_HVDATE_H

#include <halvane/core/HVObject.h>
#include <halvane/text/HVComparisonResult.h>

struct __CFDate;

class HV_EXPORT HVDate : public HVObject {
public:
    HVDate();
    HVDate(const HVDate& other);
    // Shares a date; a null object gives a null date, anything else leaves
    // the empty date.
    HVDate(const HVObject& object);
    HVDate(const void* const& ref);
    HVDate(const __CFDate* ref);

    static HVClassType ClassType();
    // A date at the reference date, made once. Emptiness is identity with
    // it: ReferenceDate() has the same time and is not empty.
    static const void* const& SharedEmptyObject();

    static HVDate Now();
    // Midnight at the start of today, in the machine's zone (GMT when the
    // machine keeps GMT).
    static HVDate Today();
    static HVDate DateWithTimeIntervalSinceReferenceDate(double seconds);
    static HVDate DateWithTimeIntervalSinceNow(double seconds);
    static HVDate DateWithTimeIntervalSince1970(double seconds);
    static HVDate DateFromObject(const HVObject& object);
    // A date for a date reference, a null date for null, the empty date for
    // any other object.
    static HVDate DateFromId(const void* const& ref);

    // Fixed dates, each made once: 0.0, -63114076800.0 and 63113904000.0
    // (the start of year 4001) seconds from the reference date.
    static const HVDate& ReferenceDate();
    static const HVDate& DistantPast();
    static const HVDate& DistantFuture();

    HVDate& operator=(const HVDate& other);
    HVDate& operator=(const __CFDate* ref);
    operator const __CFDate*() const;

    // Comparisons by time; a null date counts as the reference date.
    HVComparisonResult Compare(const HVDate& other) const;
    bool IsEqualToDate(const HVDate& other) const;
    bool operator==(const HVDate& other) const;
    bool operator!=(const HVDate& other) const;
    bool operator<(const HVDate& other) const;
    bool operator>(const HVDate& other) const;
    // Not later, not earlier.
    bool operator<=(const HVDate& other) const;
    bool operator>=(const HVDate& other) const;
    // Of two equal dates, this one.
    HVDate EarlierDate(const HVDate& other) const;
    HVDate LaterDate(const HVDate& other) const;

    // 0.0 for an empty date.
    double TimeIntervalSinceReferenceDate() const;
    double TimeIntervalSince1970() const;
    double TimeIntervalSinceNow() const;
    // This date's time minus other's (a null other counts as the reference
    // date); 0.0 when this date is empty.
    double TimeIntervalSinceDate(HVDate other) const;

    // Null, the platform's null object, or the shared empty date.
    bool IsEmpty() const override;
    // "MM-dd-yyyy HH:mm:ss.SSS" in GMT; the empty string for an empty date.
    HVString Description() override;
    // "MM-dd-yyyy HH:mm:ss.SSS" in the machine's zone (the current-locale
    // form), with " 00:00:00.000" removed: a date at midnight is written as
    // the date alone.
    HVString Serialize() override;
    // Reads that text back; text that does not read gives the empty date.
    void Deserialize(const HVString& text) override;
    bool IsNativelyAllowedInPropertyList() const override;

protected:
    void AssignUnderlyingDate(const void* ref);
    void AssignUnderlyingDateAndTakeOwnership(const void* ref);

private:
    // The held time, 0.0 when no date is held.
    double AbsoluteTime() const;
    bool HoldsDate() const;
};

#endif  // HALVANE_TIME_HVDATE_H
