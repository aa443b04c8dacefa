#include "program.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "clips.h"

namespace zepbmp::transition {

void exec_program(const Arguments& arguments) {
    std::vector<char*> argv = {const_cast<char*>(ZEPBMP_TRANSITION_PROGRAM)};
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    execv(argv[0], argv.data());
    _exit(127);
}

int wait_for(pid_t child) {
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::string file_text(const std::filesystem::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

Result run(const Arguments& arguments, uint64_t largest_file) {
    const ScratchFolder logs;
    const std::string out = logs / "out", err = logs / "err";
    const pid_t child = fork();
    if (child == 0) {
        dup2(open(out.c_str(), O_CREAT | O_WRONLY, 0600), STDOUT_FILENO);
        dup2(open(err.c_str(), O_CREAT | O_WRONLY, 0600), STDERR_FILENO);
        const rlimit limit{largest_file, largest_file};
        if (largest_file > 0)
            setrlimit(RLIMIT_FSIZE, &limit);
        exec_program(arguments);
    }
    Result result;
    result.exit_code = wait_for(child);
    result.out = file_text(out);
    result.err = file_text(err);
    return result;
}

Arguments command(const std::filesystem::path& a, const std::filesystem::path& b, const std::filesystem::path& out,
                  Arguments more) {
    more.insert(more.begin(), {a.string(), b.string(), "-o", out.string()});
    return more;
}

void expect_done(const Result& result) { ASSERT_EQ(result.exit_code, 0) << result.err; }

void expect_one_line(const Result& result, int exit_code, const std::string& part) {
    EXPECT_EQ(result.exit_code, exit_code) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err.rfind("zepbmp-transition: ", 0), 0u) << result.err;
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_NE(result.err.find(part), std::string::npos) << result.err << " should say: " << part;
}

}  // namespace zepbmp::transition
