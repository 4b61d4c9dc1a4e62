// Marks the classes and functions that the shared library exports; every
// other symbol stays hidden.
#ifndef HALVANE_CORE_HVEXPORT_H
#define HALVANE_CORE_HVEXPORT_H

#define HV_EXPORT __attribute__((visibility("default")))

#endif  // HALVANE_CORE_HVEXPORT_H
