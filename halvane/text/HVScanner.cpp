#include <halvane/text/HVScanner.h>

#include <halvane/core/detail/ClassRegistry.h>
#include <halvane/text/HVCharacterSet.h>
#include <halvane/text/HVRange.h>
#include <halvane/text/HVString.h>

#include <CoreFoundation/CoreFoundation.h>

HV_REGISTER_CLASS(HVScanner);

HVScanner::HVScanner() : HVObject(SharedEmptyObject(), HVScannerClassType), m_ScanLocation(0) {}

HVScanner::HVScanner(const HVScanner& other)
    : HVObject(other, HVScannerClassType), m_ScanLocation(other.m_ScanLocation) {}

// The location starts at 0 here too: a scanner built by the object core
// from a string scans it from its start.
HVScanner::HVScanner(const void* const& ref) : HVObject(ref, HVScannerClassType), m_ScanLocation(0) {}

HVScanner::~HVScanner() = default;

HVClassType HVScanner::ClassType() {
    return HVScannerClassType;
}

const void* const& HVScanner::SharedEmptyObject() {
    return HVString::SharedEmptyObject();
}

HVScanner HVScanner::ScannerWithString(const HVString& text) {
    HVScanner scanner;
    scanner.InitWithString(text);
    return scanner;
}

void HVScanner::InitWithString(const HVString& text) {
    if (text.Ref() != m_Ref) {
        Nullify();
        m_Ref = text.Ref();
        Retain();
    }
    m_ScanLocation = 0;
}

unsigned long long HVScanner::ScanLocation() const {
    return m_ScanLocation;
}

void HVScanner::SetScanLocation(unsigned long long location) {
    m_ScanLocation = location;
}

bool HVScanner::IsAtEnd() {
    return m_ScanLocation >= HVString(m_Ref).Length();
}

bool HVScanner::ScanCharactersFromSetIntoString(const HVCharacterSet& set, HVString* result) {
    return ScanRun(set, true, result);
}

bool HVScanner::ScanUpToCharactersFromSetIntoString(const HVCharacterSet& set, HVString* result) {
    return ScanRun(set, false, result);
}

bool HVScanner::ScanCharactersFromSet(const HVCharacterSet& set, HVString& result) {
    return ScanCharactersFromSetIntoString(set, &result);
}

bool HVScanner::ScanRun(const HVCharacterSet& set, bool members, HVString* result) {
    const unsigned long long start = m_ScanLocation;
    // Held for the whole call, whatever happens to the scanner meanwhile.
    const HVString text(m_Ref);
    auto characters = static_cast<CFCharacterSetRef>(set.Ref());
    unsigned long long count = 0;
    while (m_ScanLocation < text.Length()) {
        auto unit = UniChar(text.CharacterAtIndex(m_ScanLocation));
        if (bool(CFCharacterSetIsCharacterMember(characters, unit)) != members) break;
        ++m_ScanLocation;
        ++count;
    }
    if (result == nullptr || count == 0) return false;
    *result = count == text.Length() ? text : text.SubstringWithRange(HVRange(start, count));
    return true;
}

HVScanner& HVScanner::operator=(const HVScanner& other) {
    if (other.m_Ref != m_Ref) {
        Nullify();
        m_Ref = other.m_Ref;
        m_ClassType = HVScannerClassType;
        Retain();
    }
    m_ScanLocation = other.m_ScanLocation;
    return *this;
}
