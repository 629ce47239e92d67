// Paths as the platform writes them.
#pragma once

// The separator between a path's parts.
constexpr char kPathSeparator = '/';
