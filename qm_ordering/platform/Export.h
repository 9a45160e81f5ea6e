#pragma once

// Symbols are hidden by default. What a host uses is visible as a whole class, so that catch and
// dynamic_cast agree on both sides of the library's boundary.
#define QM_ORDERING_API __attribute__((visibility("default")))
