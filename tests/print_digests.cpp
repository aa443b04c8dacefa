/// \file
/// Prints what belongs into digests.txt: print_digests >tests/digests.txt
#include <cstdio>
#include <set>

#include "support/corpus.h"
#include "support/tables.h"

int main() {
    using namespace zepbmp::test;
    std::set<std::string> lines;
    for (const Tables& tables : {Tables{0, 8}, Tables{1, 8}}) {
        if (const std::string reason = why_not(tables); !reason.empty()) {
            std::fprintf(stderr, "error: level %d can't be run: %s\n", tables.level, reason.c_str());
            return 1;
        }
        const UseTables use(tables);
        for (const Digest& digest : digest_corpus(tables.level == 0))
            lines.insert(to_line(digest));
    }
    for (const std::string& line : lines)
        std::fputs(line.c_str(), stdout);
    return std::fflush(stdout) == 0 ? 0 : 1;
}
