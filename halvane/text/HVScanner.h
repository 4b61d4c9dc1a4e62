// HVScanner: walks a string from a scan location and consumes runs of
// characters that are, or are not, in a character set.
#ifndef HALVANE_TEXT_HVSCANNER_H
#define HALVANE_TEXT_HVSCANNER_H

#include <halvane/core/HVObject.h>

class HVCharacterSet;
class HVString;

class HV_EXPORT HVScanner : public HVObject {
public:
    HVScanner();
    HVScanner(const HVScanner& other);
    ~HVScanner() override;

    static HVClassType ClassType();
    // The empty string.
    static const void* const& SharedEmptyObject();

    static HVScanner ScannerWithString(const HVString& text);
    // Scans text from its start.
    void InitWithString(const HVString& text);

    // The index of the next UTF-16 unit to examine.
    unsigned long long ScanLocation() const;
    // Unchecked: a location past the end makes every scan consume nothing.
    void SetScanLocation(unsigned long long location);
    bool IsAtEnd();

    // Both consume the longest run of characters in (not in) the set and
    // leave the location after it. The result is true only when result is
    // not NULL and the run is not empty; a NULL result still moves the
    // location. Kept so: callers skip runs that way.
    bool ScanCharactersFromSetIntoString(const HVCharacterSet& set, HVString* result);
    bool ScanUpToCharactersFromSetIntoString(const HVCharacterSet& set, HVString* result);
    bool ScanCharactersFromSet(const HVCharacterSet& set, HVString& result);

    HVScanner& operator=(const HVScanner& other);

protected:
    HVScanner(const void* const& ref);

private:
    bool ScanRun(const HVCharacterSet& set, bool members, HVString* result);

    unsigned long long m_ScanLocation;

    template <typename T>
    friend struct halvane::detail::WrapperFactory;
};

#endif  // HALVANE_TEXT_HVSCANNER_H
