/// @file
/// What leaves a module. Everything else is hidden at compile time, and the
/// version script of the module lets nothing through that is not marked.
#pragma once

/// Marks an exported declaration.
#define VN_API __attribute__((visibility("default")))
