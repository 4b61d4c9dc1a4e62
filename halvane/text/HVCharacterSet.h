// HVCharacterSet: an immutable set of characters, over a CoreFoundation
// character set, used to classify text (trimming, splitting, scanning).
// Every edit replaces the held set with a new immutable one.
#ifndef HALVANE_TEXT_HVCHARACTERSET_H
#define HALVANE_TEXT_HVCHARACTERSET_H

#include <halvane/core/HVObject.h>

class HVString;
class HVRange;
struct __CFCharacterSet;

class HV_EXPORT HVCharacterSet : public HVObject {
public:
    HVCharacterSet();
    HVCharacterSet(const HVCharacterSet& other);
    HVCharacterSet(const __CFCharacterSet* ref);
    ~HVCharacterSet() override;

    static HVClassType ClassType();
    // An empty data object, not a character set: a default-constructed set
    // is empty by identity with it. Kept so: callers test emptiness that way.
    static const void* const& SharedEmptyObject();

    // The predefined sets hold ASCII characters only, whatever Unicode
    // counts as a space, a digit or a letter.
    static const HVCharacterSet& WhitespaceCharacterSet();            // space, tab
    static const HVCharacterSet& WhitespaceAndNewlineCharacterSet();  // and LF, CR, VT, FF
    static const HVCharacterSet& DecimalDigitCharacterSet();          // 0-9
    static const HVCharacterSet& LetterCharacterSet();                // a-z, A-Z
    static const HVCharacterSet& AlphaNumericCharacterSet();          // 0-9, a-z, A-Z

    static HVCharacterSet CharacterSetWithCharactersInString(const HVString& characters);
    // The code points from the range's location on, cut to the platform's
    // 32-bit index.
    static HVCharacterSet CharacterSetWithRange(const HVRange& range);
    static HVCharacterSet InvertedCharacterSet(const HVCharacterSet& set);

    HVCharacterSet InvertedSet();
    void AddCharactersInString(const HVString& characters);
    void RemoveCharactersInString(const HVString& characters);

    HVCharacterSet& operator=(const HVCharacterSet& other);
    HVCharacterSet& operator=(const __CFCharacterSet* ref);
    operator const __CFCharacterSet*() const;

protected:
    // Both share whatever the source holds, without a type check.
    HVCharacterSet(const void* const& ref);
    HVCharacterSet(const HVObject& object);

private:
    void AssignUnderlyingSet(const void* ref);
    void AssignUnderlyingSetAndTakeOwnership(const void* ref);

    template <typename T>
    friend struct halvane::detail::WrapperFactory;
};

#endif  // HALVANE_TEXT_HVCHARACTERSET_H
