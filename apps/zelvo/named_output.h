#pragma once

#include <cstdio>
#include <functional>

/// Lets a writer that wants the name of a file, and need not notice when a write fails, write to an
/// open file: it gets the name of a pipe that never fails, and what comes out of the pipe is
/// written to the target. Failed writes then show in the target (ferror) and in errno.
///
/// Returns the writer's result; passes its exceptions on. Throws std::system_error when the system
/// has no pipe or thread left.
int write_by_name(std::FILE* target, const std::function<int(const char*)>& write);
