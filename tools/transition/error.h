#pragma once

#include <stdexcept>
#include <string>

namespace zepbmp::transition {

enum ExitCode {
    kExitDone = 0,
    kExitFailed = 1,  // the work began and could not be finished, e.g. the disk is full
    kExitRefused = 2  // the request cannot be carried out: command line, input files, times
};

/// The only error type of the program. The message is one line for the user, without the program's name.
class Error : public std::runtime_error {
public:
    explicit Error(const std::string& message, ExitCode exit_code = kExitFailed)
        : std::runtime_error(message), exit_code_(exit_code) {}
    int exit_code() const { return exit_code_; }

private:
    int exit_code_;
};

}  // namespace zepbmp::transition
