#include <halvane/values/HVSerialization.h>

HVSerialization::~HVSerialization() = default;
