// Paths as the platform writes them.
#pragma once

// The separator between a path's parts.
#ifdef _WIN32
constexpr char kPathSeparator = '\\';
#else
constexpr char kPathSeparator = '/';
#endif
