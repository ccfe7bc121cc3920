// Declared by hand from Apple's documentation; the package of the compiler that checks the code for macOS
// lacks it.
#pragma once

#include <stdint.h>

typedef uint32_t xattr_operation_intent_t;
#define XATTR_OPERATION_INTENT_COPY 1

#ifdef __cplusplus
extern "C"
#endif
    int
    xattr_preserve_for_intent(const char* name, xattr_operation_intent_t intent);
