/// @file
/// What the headers say to the compiler about visibility.

#ifndef TRUNNION_IK_EXPORT_H
#define TRUNNION_IK_EXPORT_H

/// Marks what the library exports; everything else stays hidden in it.
#define IK_API __attribute__((visibility("default")))

#endif
