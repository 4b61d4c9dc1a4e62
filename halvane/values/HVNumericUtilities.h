// Minima and maxima across mixed numeric types. All static, no state.
//
// The floating forms return the first argument only when it is strictly
// smaller (Min) or larger (Max); on equality or when either is NaN they
// return the second. Callers rely on that order.
#ifndef HALVANE_VALUES_HVNUMERICUTILITIES_H
#define HALVANE_VALUES_HVNUMERICUTILITIES_H

#include <halvane/core/HVExport.h>

#include <type_traits>

class HV_EXPORT HVIntegerUtilites {
public:
    static long long Min(long long a, long long b);
    static long long Max(long long a, long long b);
};

// An int is sign-extended to 64 bits and then compared unsigned, so a
// negative int counts as a very large value: Min(-1, 5) is 5. Kept so:
// callers rely on it.
class HV_EXPORT HVUIntegerUtilites {
public:
    static unsigned long long Min(unsigned long long a, unsigned long long b);
    static unsigned long long Min(int a, unsigned long long b);
    static unsigned long long Min(unsigned long long a, int b);
    static unsigned long long Max(unsigned long long a, unsigned long long b);
    static unsigned long long Max(int a, unsigned long long b);
    static unsigned long long Max(unsigned long long a, int b);

    // Other pairs of integers (two ints, for one) widen the same way rather
    // than being ambiguous between the forms above.
    template <typename A, typename B>
    requires(std::is_integral_v<A>&& std::is_integral_v<B>) static unsigned long long Min(A a, B b) {
        return Min(static_cast<unsigned long long>(a), static_cast<unsigned long long>(b));
    }
    template <typename A, typename B>
    requires(std::is_integral_v<A>&& std::is_integral_v<B>) static unsigned long long Max(A a, B b) {
        return Max(static_cast<unsigned long long>(a), static_cast<unsigned long long>(b));
    }
};

// The same rules as HVUIntegerUtilites.
class HV_EXPORT HVULongLongUtilites {
public:
    static unsigned long long Min(unsigned long long a, unsigned long long b);
    static unsigned long long Min(int a, unsigned long long b);
    static unsigned long long Min(unsigned long long a, int b);
    static unsigned long long Max(unsigned long long a, unsigned long long b);
    static unsigned long long Max(int a, unsigned long long b);
    static unsigned long long Max(unsigned long long a, int b);

    template <typename A, typename B>
    requires(std::is_integral_v<A>&& std::is_integral_v<B>) static unsigned long long Min(A a, B b) {
        return Min(static_cast<unsigned long long>(a), static_cast<unsigned long long>(b));
    }
    template <typename A, typename B>
    requires(std::is_integral_v<A>&& std::is_integral_v<B>) static unsigned long long Max(A a, B b) {
        return Max(static_cast<unsigned long long>(a), static_cast<unsigned long long>(b));
    }
};

// A float is widened to double.
class HV_EXPORT HVDoubleUtilites {
public:
    static double Min(double a, double b);
    static double Min(float a, double b);
    static double Min(double a, float b);
    static double Max(double a, double b);
    static double Max(float a, double b);
    static double Max(double a, float b);

    // Other numeric pairs (two floats, an int and a double) are widened to
    // double rather than being ambiguous between the forms above.
    template <typename A, typename B>
    requires(std::is_arithmetic_v<A>&& std::is_arithmetic_v<B>) static double Min(A a, B b) {
        return Min(static_cast<double>(a), static_cast<double>(b));
    }
    template <typename A, typename B>
    requires(std::is_arithmetic_v<A>&& std::is_arithmetic_v<B>) static double Max(A a, B b) {
        return Max(static_cast<double>(a), static_cast<double>(b));
    }
};

// An int is converted to double.
class HV_EXPORT HVFloatUtilites {
public:
    static double Min(double a, double b);
    static double Min(int a, double b);
    static double Min(double a, int b);
    static double Max(double a, double b);
    static double Max(int a, double b);
    static double Max(double a, int b);

    template <typename A, typename B>
    requires(std::is_arithmetic_v<A>&& std::is_arithmetic_v<B>) static double Min(A a, B b) {
        return Min(static_cast<double>(a), static_cast<double>(b));
    }
    template <typename A, typename B>
    requires(std::is_arithmetic_v<A>&& std::is_arithmetic_v<B>) static double Max(A a, B b) {
        return Max(static_cast<double>(a), static_cast<double>(b));
    }
};

class HV_EXPORT HVCoordinateUtilites {
public:
    static double Min(double a, double b);
    static double Max(double a, double b);
};

#endif  // HALVANE_VALUES_HVNUMERICUTILITIES_H
