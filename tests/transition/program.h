#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace zepbmp::transition {

using Arguments = std::vector<std::string>;

struct Result {
    int exit_code = -1;  // or minus the signal
    std::string out;
    std::string err;
};

/// Becomes the program. For a child process.
[[noreturn]] void exec_program(const Arguments& arguments);

/// A child's exit code, or minus the signal that ended it.
int wait_for(pid_t child);

std::string file_text(const std::filesystem::path& path);

/// Runs the program to its end. `largest_file`: bytes after which writing fails, 0 for no limit.
Result run(const Arguments& arguments, uint64_t largest_file = 0);

/// Arguments for two videos and an output.
Arguments command(const std::filesystem::path& a, const std::filesystem::path& b, const std::filesystem::path& out,
                  Arguments more);

void expect_done(const Result& result);

/// Expects that nothing but one line was printed, on standard error, which holds `part`.
void expect_one_line(const Result& result, int exit_code, const std::string& part);

}  // namespace zepbmp::transition
