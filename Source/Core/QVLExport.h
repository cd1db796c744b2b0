#pragma once

/// Marks what a host may call. Everything else of the library is hidden.
#define QVL_EXPORT __attribute__((visibility("default")))
