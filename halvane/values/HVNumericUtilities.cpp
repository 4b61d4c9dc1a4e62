#include <halvane/values/HVNumericUtilities.h>

namespace {

// The first argument only when strictly smaller (larger): NaN or equality
// gives the second.
double minimum(double a, double b) {
    return a < b ? a : b;
}
double maximum(double a, double b) {
    return a > b ? a : b;
}

// An int widens with its sign, so -1 becomes 0xFFFFFFFFFFFFFFFF.
unsigned long long widened(int value) {
    return static_cast<unsigned long long>(static_cast<long long>(value));
}

unsigned long long minimum(unsigned long long a, unsigned long long b) {
    return a < b ? a : b;
}
unsigned long long maximum(unsigned long long a, unsigned long long b) {
    return a > b ? a : b;
}

}  // namespace

long long HVIntegerUtilites::Min(long long a, long long b) {
    return a < b ? a : b;
}
long long HVIntegerUtilites::Max(long long a, long long b) {
    return a > b ? a : b;
}

unsigned long long HVUIntegerUtilites::Min(unsigned long long a, unsigned long long b) {
    return minimum(a, b);
}
unsigned long long HVUIntegerUtilites::Min(int a, unsigned long long b) {
    return minimum(widened(a), b);
}
unsigned long long HVUIntegerUtilites::Min(unsigned long long a, int b) {
    return minimum(a, widened(b));
}
unsigned long long HVUIntegerUtilites::Max(unsigned long long a, unsigned long long b) {
    return maximum(a, b);
}
unsigned long long HVUIntegerUtilites::Max(int a, unsigned long long b) {
    return maximum(widened(a), b);
}
unsigned long long HVUIntegerUtilites::Max(unsigned long long a, int b) {
    return maximum(a, widened(b));
}

unsigned long long HVULongLongUtilites::Min(unsigned long long a, unsigned long long b) {
    return minimum(a, b);
}
unsigned long long HVULongLongUtilites::Min(int a, unsigned long long b) {
    return minimum(widened(a), b);
}
unsigned long long HVULongLongUtilites::Min(unsigned long long a, int b) {
    return minimum(a, widened(b));
}
unsigned long long HVULongLongUtilites::Max(unsigned long long a, unsigned long long b) {
    return maximum(a, b);
}
unsigned long long HVULongLongUtilites::Max(int a, unsigned long long b) {
    return maximum(widened(a), b);
}
unsigned long long HVULongLongUtilites::Max(unsigned long long a, int b) {
    return maximum(a, widened(b));
}

double HVDoubleUtilites::Min(double a, double b) {
    return minimum(a, b);
}
double HVDoubleUtilites::Min(float a, double b) {
    return minimum(double(a), b);
}
double HVDoubleUtilites::Min(double a, float b) {
    return minimum(a, double(b));
}
double HVDoubleUtilites::Max(double a, double b) {
    return maximum(a, b);
}
double HVDoubleUtilites::Max(float a, double b) {
    return maximum(double(a), b);
}
double HVDoubleUtilites::Max(double a, float b) {
    return maximum(a, double(b));
}

double HVFloatUtilites::Min(double a, double b) {
    return minimum(a, b);
}
double HVFloatUtilites::Min(int a, double b) {
    return minimum(double(a), b);
}
double HVFloatUtilites::Min(double a, int b) {
    return minimum(a, double(b));
}
double HVFloatUtilites::Max(double a, double b) {
    return maximum(a, b);
}
double HVFloatUtilites::Max(int a, double b) {
    return maximum(double(a), b);
}
double HVFloatUtilites::Max(double a, int b) {
    return maximum(a, double(b));
}

double HVCoordinateUtilites::Min(double a, double b) {
    return minimum(a, b);
}
double HVCoordinateUtilites::Max(double a, double b) {
    return maximum(a, b);
}
