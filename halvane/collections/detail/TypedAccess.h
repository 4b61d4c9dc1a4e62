// The machinery behind the typed accessors of arrays and dictionaries. Each
// accessor is one rule of TypedAccessRules.h (the element class types it
// accepts, how each is converted, and the function name and line that its
// assertion reports); the templates here apply a rule the same way for every
// accessor, so the members of every family differ only in their rule.
#ifndef HALVANE_COLLECTIONS_DETAIL_TYPEDACCESS_H
#define HALVANE_COLLECTIONS_DETAIL_TYPEDACCESS_H

#include <halvane/core/HVObject.h>
#include <halvane/core/detail/ClassTypeTable.h>
#include <halvane/errors/HVError.h>
#include <halvane/text/HVString.h>

#include <array>
#include <cstddef>
#include <type_traits>

namespace halvane::detail {

// One accepted element class type and how an element of it becomes the
// result.
template <typename Result>
struct Conversion {
    HVClassType type;
    void (*convert)(const void* element, HVClassType type, Result& result);
};

template <typename Result, std::size_t Rows>
struct AccessRule {
    // What the assertion of the form without an error argument names.
    const char* function;
    int line;
    std::array<Conversion<Result>, Rows> conversions;

    // The first row that accepts the type; nullptr when none does.
    const Conversion<Result>* Find(HVClassType type) const {
        for (const Conversion<Result>& row : conversions) {
            if (row.type == type) return &row;
        }
        return nullptr;
    }

    // Converts by the first row that accepts the type; false when none does.
    bool Convert(const void* element, HVClassType type, Result& result) const {
        const Conversion<Result>* row = Find(type);
        if (row != nullptr) row->convert(element, type, result);
        return row != nullptr;
    }
};

// The conversion of most rows: the result holds the element itself.
template <typename Result>
void Share(const void* element, HVClassType type, Result& result) {
    result.AssignUsingClassType(element, type);
}

template <typename Result>
constexpr Conversion<Result> Accept(HVClassType type, void (*convert)(const void*, HVClassType, Result&)) {
    return {type, convert};
}

template <typename Result, typename... More>
constexpr AccessRule<Result, 1 + sizeof...(More)> Rule(const char* function, int line, Conversion<Result> first,
                                                       More... more) {
    return {function, line, {first, more...}};
}

// A rule for an accessor that has no form which logs: it names no function
// and no line.
template <typename Result, typename... More>
constexpr AccessRule<Result, 1 + sizeof...(More)> QuietRule(Conversion<Result> first, More... more) {
    return {nullptr, 0, {first, more...}};
}

// Where a failure goes: the caller's error, an assertion line (the forms
// without an error argument), or nowhere (the forms that never report).
// The error is made only when there is a failure to report, so a lookup
// that succeeds builds no error object at all.
struct ErrorSlot {
    HVError* error = nullptr;
    void (*assertion)(const HVError& error, const char* function, int line) = nullptr;
    const char* function = nullptr;
    int line = 0;

    template <typename Make>
    void Report(Make make) const {
        if (error != nullptr) {
            *error = make();
        } else if (assertion != nullptr) {
            assertion(make(), function, line);
        }
    }
};

// "Object type does not match the object type requested." with the reason
// "Object type at index %d is a %@." (code 20004).
HVError TypeMismatchAtIndex(unsigned long long index, HVClassType type);
// The same with the reason "Object type with key %@ is a %@.".
HVError TypeMismatchForKey(const HVString& key, HVClassType type);
// "Key not contained in dictionary." (code 20006).
HVError KeyNotFound();

// The assertion lines of the forms without an error argument.
void ReportArrayMismatch(const HVError& error, const char* function, int line);
void ReportDictionaryMismatchUnlessMissing(const HVError& error, const char* function, int line);

// The values a result starts from and falls back to.
template <typename Result>
struct ResultTraits {
    // An object of the type that holds no reference; for the plain
    // geometry values, which hold none, their zero value.
    static Result Null() {
        if constexpr (!std::is_base_of_v<HVObject, Result>) {
            return Result();
        } else if constexpr (std::is_constructible_v<Result, const void* const&>) {
            const void* none = nullptr;
            return Result(none);
        } else {
            Result result;
            result.Nullify();
            return result;
        }
    }
    // The element itself, retained: what Share makes of a null start, built
    // in one step.
    static Result Holding(const void* element) {
        if constexpr (std::is_base_of_v<HVObject, Result> && std::is_constructible_v<Result, const void* const&>) {
            return Result(element);
        } else {
            return Null();
        }
    }
    // Whether a row's conversion is Share, which Holding() does at once.
    // Every class with a sharing row wraps a reference the way its
    // constructor from a platform reference does.
    static bool Shares(const Conversion<Result>* row) {
        if constexpr (std::is_base_of_v<HVObject, Result> && std::is_constructible_v<Result, const void* const&>) {
            return row != nullptr && row->convert == &Share<Result>;
        } else {
            return false;
        }
    }
    // The shared empty object of the type (the zero value for geometry).
    static Result Empty() { return Result(); }
    static bool HoldsNothing(const Result& result) {
        if constexpr (std::is_base_of_v<HVObject, Result>) {
            return result.IsNull();
        } else {
            return false;
        }
    }
};

template <typename Pointee>
struct ResultTraits<Pointee*> {
    static Pointee* Null() { return nullptr; }
    static Pointee* Holding(const void*) { return nullptr; }
    static bool Shares(const Conversion<Pointee*>*) { return false; }
    static Pointee* Empty() { return nullptr; }
    static bool HoldsNothing(Pointee* result) { return result == nullptr; }
};

// Each conversion below returns the one named result on every path, so the
// result is built in the caller's storage: a wrapper copy on the way out
// would cost a retain and a release per lookup.

// Whether the rule shares an element of the class that the element's type
// ID names: the case of nearly every call, answered without a call.
template <typename Result, std::size_t Rows>
bool SharesAtOnce(const void* element, const AccessRule<Result, Rows>& rule) {
    HVClassType type = SettledClassTypeOf(element);
    return type != HVUnknownClassType && ResultTraits<Result>::Shares(rule.Find(type));
}

// XAtIndex(index, error): the element (already range-checked) converted by
// the rule; a null element is the empty result without an error.
template <typename Result, std::size_t Rows>
[[gnu::noinline]] Result ConvertedElementSlowly(const void* element, unsigned long long index, const ErrorSlot& error,
                                                const AccessRule<Result, Rows>& rule);

template <typename Result, std::size_t Rows>
Result ConvertedElement(const void* element, unsigned long long index, const ErrorSlot& error,
                        const AccessRule<Result, Rows>& rule) {
    if (SharesAtOnce(element, rule)) return ResultTraits<Result>::Holding(element);
    return ConvertedElementSlowly(element, index, error, rule);
}

template <typename Result, std::size_t Rows>
Result ConvertedElementSlowly(const void* element, unsigned long long index, const ErrorSlot& error,
                              const AccessRule<Result, Rows>& rule) {
    using Traits = ResultTraits<Result>;
    HVClassType type = element != nullptr ? ClassTypeOfReference(element) : HVObjectClassType;
    const Conversion<Result>* row = element != nullptr ? rule.Find(type) : nullptr;
    const bool shares = Traits::Shares(row);
    Result result = shares ? Traits::Holding(element) : Traits::Null();
    if (!shares) {
        if (row != nullptr) {
            row->convert(element, type, result);
        } else if (element != nullptr) {
            error.Report([&] { return TypeMismatchAtIndex(index, type); });
        }
        if (row == nullptr || Traits::HoldsNothing(result)) result = Traits::Empty();
    }
    return result;
}

// What a dictionary lookup hands back when it finds no value: the object
// that holds no reference (XForExistingKey) or the shared empty object of
// the type (XForKey).
enum class WhenMissing { Null, Empty };

// XForExistingKey and XForKey: value is what the raw lookup found (null for
// a missing key, which the lookup has reported when asked to). A null value
// object counts as missing and is not reported.
template <typename Result, std::size_t Rows>
[[gnu::noinline]] Result ConvertedValueSlowly(const void* value, const HVString& key, const ErrorSlot& error,
                                              const AccessRule<Result, Rows>& rule, WhenMissing missing);

template <typename Result, std::size_t Rows>
Result ConvertedValue(const void* value, const HVString& key, const ErrorSlot& error,
                      const AccessRule<Result, Rows>& rule, WhenMissing missing) {
    if (SharesAtOnce(value, rule)) return ResultTraits<Result>::Holding(value);
    return ConvertedValueSlowly(value, key, error, rule, missing);
}

template <typename Result, std::size_t Rows>
Result ConvertedValueSlowly(const void* value, const HVString& key, const ErrorSlot& error,
                            const AccessRule<Result, Rows>& rule, WhenMissing missing) {
    using Traits = ResultTraits<Result>;
    HVClassType type = value != nullptr ? ClassTypeOfReference(value) : HVNullClassType;
    const Conversion<Result>* row = type != HVNullClassType ? rule.Find(type) : nullptr;
    const bool shares = Traits::Shares(row);
    Result result = shares ? Traits::Holding(value) : Traits::Null();
    if (!shares) {
        if (row != nullptr) {
            row->convert(value, type, result);
        } else if (type != HVNullClassType) {
            error.Report([&] { return TypeMismatchForKey(key, type); });
        }
        if (missing == WhenMissing::Empty && Traits::HoldsNothing(result)) result = Traits::Empty();
    }
    return result;
}

// Points, sizes and rectangles of a dictionary come from its string value:
// a missing, mistyped or empty string is a type mismatch naming the string
// class.
template <typename Geometry, std::size_t Rows>
Geometry GeometryFromText(const HVString& text, const HVString& key, const ErrorSlot& error,
                          const AccessRule<Geometry, Rows>& rule) {
    Geometry result;
    if (text.IsEmpty()) {
        error.Report([&] { return TypeMismatchForKey(key, HVStringClassType); });
        return result;
    }
    rule.Convert(text.Ref(), HVStringClassType, result);
    return result;
}

}  // namespace halvane::detail

#endif  // HALVANE_COLLECTIONS_DETAIL_TYPEDACCESS_H
