// The preconditions of the node layer.
#pragma once

#include "base/assertion.h"

// The texts are part of the interface, in the form a C preprocessor gives NULL.
#define NODE_ASSERT_TEXT(condition, text) \
  ((condition) ? static_cast<void>(0) : fairlead::assertion_failed(__func__, text))
#define NODE_ASSERT(condition) NODE_ASSERT_TEXT(condition, #condition)
#define NODE_ASSERT_GIVEN(pointer) NODE_ASSERT_TEXT(pointer, #pointer " != ((void *)0)")
#define NODE_ASSERT_NULL(pointer) NODE_ASSERT_TEXT(!(pointer), #pointer " == ((void *)0)")
