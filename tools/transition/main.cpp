#include <csignal>
#include <cstdio>
#include <exception>
#include <new>

#include "error.h"
#include "interrupt.h"
#include "join.h"
#include "libav.h"
#include "options.h"
#include "transition.h"

namespace {

using namespace zepbmp::transition;

void complain(const char* message) { std::fprintf(stderr, "zepbmp-transition: %s\n", message); }

int run(int argc, char** argv) {
    const CommandLine line = parse_command_line({argv + 1, argv + argc});
    if (line.run && line.run->count) {
        std::printf("%lld\n", static_cast<long long>(count_frames(*line.run)));
        return std::fflush(stdout) == 0 ? kExitDone : kExitFailed;
    }
    if (!line.run && !line.join) {
        std::fputs(line.text.c_str(), stdout);
        return std::fflush(stdout) == 0 ? kExitDone : kExitFailed;
    }
    const Report report = line.join ? join_parts(*line.join) : make_transition(*line.run);
    for (const std::string& warning : report.warnings)
        complain(("warning: " + warning).c_str());
    std::printf("%s\n", report.summary.c_str());
    return std::fflush(stdout) == 0 ? kExitDone : kExitFailed;
}

}  // namespace

int main(int argc, char** argv) {
    av_log_set_level(AV_LOG_QUIET);
    std::signal(SIGPIPE, SIG_IGN);  // writing reports these two as errors, which then are cleaned up after
    std::signal(SIGXFSZ, SIG_IGN);
    note_interrupts();
    try {
        return run(argc, argv);
    } catch (const Interrupted& interruption) {
        complain("interrupted; nothing was written");
        std::signal(interruption.signal(), SIG_DFL);
        std::raise(interruption.signal());  // so that a shell's loop over files ends too
        return 128 + interruption.signal();
    } catch (const Error& error) {
        complain(error.what());
        return error.exit_code();
    } catch (const std::bad_alloc&) {
        complain("not enough memory");
    } catch (const std::exception& error) {
        complain(error.what());
    }
    return kExitFailed;
}
