/// \file
/// zepbmp-bench: picks subjects, measures them one after the other, reports.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iterator>
#include <memory>
#include <new>
#include <regex>
#include <stdexcept>
#include <string>

#include "measure.h"
#include "report.h"
#include "subject.h"

namespace {

using namespace zepbmp::bench;

constexpr bool kPeersBuilt = ZEPBMP_BENCH_PEERS;

struct Options {
    std::string operation = ".*";
    std::string json_path;
    Effort effort = {.repetitions = 9, .seconds = 0.1};
    bool stores = false;
    bool list = false;
    bool verify = false;
};

void add_options(CLI::App& app, Options& options) {
    app.add_option("--op", options.operation,
                   "Only subjects whose name (operation_format_weight/size, see --list) contains a match of this "
                   "regular expression");
    app.add_flag("--stores", options.stores,
                 "Instead of the operations: stores through the caches against stores past them, by footprint");
    app.add_flag("--list", options.list, "Print the names of the subjects and end");
    app.add_flag("--verify", options.verify,
                 "Check the bytes of every kernel set, and how near those peers come who draw the same picture; time "
                 "nothing");
    app.add_option("--repetitions", options.effort.repetitions, "Of each row, shuffled among the rows of a subject")
        ->check(CLI::Range(1, 1000))
        ->capture_default_str();
    app.add_option("--min-time", options.effort.seconds,
                   "Of a repetition, in seconds: of processor time; on Windows, elapsed ones")
        ->check(CLI::Range(0.001, 60.0))
        ->capture_default_str();
    app.add_option("--json", options.json_path,
                   "Also write every repetition to this file, in Google Benchmark's format");
}

std::vector<Subject> pick_subjects(const Options& options) {
    std::vector<Subject> subjects;
    const auto append = [&](std::vector<Subject> group) {
        std::move(group.begin(), group.end(), std::back_inserter(subjects));
    };
    if (options.stores) {
        append(store_subjects());
    } else {
        append(compose_subjects());
        append(color_subjects());
        append(line_subjects());
        append(drawing_subjects());
        append(shape_subjects());
        append(polygon_subjects());
        append(rect_subjects());
    }
    const std::regex wanted(options.operation);
    std::erase_if(subjects, [&](const Subject& subject) { return !std::regex_search(subject.name, wanted); });
    if (!kPeersBuilt) {  // most goals are ratios to them
        for (Subject& subject : subjects) {
            subject.peers.clear();
            subject.target = {};
        }
    }
    if (subjects.empty())
        throw std::runtime_error("nothing matches --op " + options.operation + "; --list prints the names");
    return subjects;
}

/// Google Benchmark's own report of every repetition, in a file.
class JsonFile {
public:
    explicit JsonFile(const std::string& path) : file_(path) {
        if (!file_)  // now, not after the measurements
            throw std::runtime_error("cannot write " + path);
        reporter_.SetOutputStream(&file_);
        reporter_.SetErrorStream(&file_);
        reporter_.ReportContext(benchmark::BenchmarkReporter::Context());
    }

    benchmark::BenchmarkReporter* reporter() { return &reporter_; }

    void finish(const std::string& path) {
        reporter_.Finalize();
        file_.close();
        if (!file_)
            throw std::runtime_error("cannot write " + path);
    }

private:
    std::ofstream file_;
    benchmark::JSONReporter reporter_;
};

void run(const Options& options) {
    const std::vector<Subject> subjects = pick_subjects(options);
    if (options.list) {
        for (const Subject& subject : subjects)
            std::printf("%s\n", subject.name.c_str());
        return;
    }
    if (options.verify) {
        for (const Subject& subject : subjects)
            print_likenesses(stdout, subject, verify(subject));
        return;
    }
    prepare_measurements();
    const std::unique_ptr<JsonFile> json(options.json_path.empty() ? nullptr : new JsonFile(options.json_path));
    std::vector<Measured> all;
    for (const Subject& subject : subjects) {
        all.push_back({&subject, measure(subject, options.effort, json ? json->reporter() : nullptr)});
        print_rows(stdout, all.back());
    }
    if (options.stores) {
        print_stores(stdout, all);
    } else {
        print_summary(stdout, all);
        if (kPeersBuilt) {
            std::fputc('\n', stdout);
            print_targets(stdout, all);
        }
    }
    if (json)
        json->finish(options.json_path);
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app(
        "Speed of the kernels of zepbmp, at every width that this machine has, beside memcpy and others doing "
        "the same job. Every kernel's bytes are compared with the tests' model before it is timed; where "
        "they differ, the program fails.",
        "zepbmp-bench");
    Options options;
    add_options(app, options);
    CLI11_PARSE(app, argc, argv);
    try {
        run(options);
    } catch (const WrongBytes& wrong) {
        std::fprintf(stderr, "zepbmp-bench: wrong, not timed: %s\n", wrong.what());
        return EXIT_FAILURE;
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "zepbmp-bench: out of memory; rings of frames take %zu MB each\n", ring_bytes() / 1000000);
        return EXIT_FAILURE;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "zepbmp-bench: %s\n", error.what());
        return EXIT_FAILURE;
    }
    return std::fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
