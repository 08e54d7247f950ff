#pragma once

/// Marks what the shared library exports; everything else stays hidden.
#define VORUND_EXPORT __attribute__((visibility("default")))
