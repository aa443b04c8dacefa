/// \file
/// The bytes of a fixed corpus of calls, against digests.txt: one set for all targets, levels and widths.
#include <gtest/gtest.h>

#include "digests_txt.h"
#include "support/corpus.h"
#include "support/tables.h"

namespace zepbmp::test {
namespace {

class Digests : public WithTables {};

TEST_P(Digests, AreTheStoredOnes) {
    const UseTables use(GetParam());
    const std::string stored = std::string("\n") + kDigestsTxt;
    for (const Digest& digest : digest_corpus(GetParam().level == 0))
        EXPECT_NE(stored.find("\n" + to_line(digest)), std::string::npos)
            << "not in tests/digests.txt: " << to_line(digest) << "if the bytes are meant to change, run print_digests";
}

TEST_P(Digests, DoNotDependOnHowStoresGo) {
    const UseTables use(GetParam());
    std::string lines[2];
    for (const bool streams : {false, true}) {
        const ForceStreaming streaming(streams);
        for (const Digest& digest : digest_corpus(GetParam().level == 0))
            lines[streams] += to_line(digest);
    }
    EXPECT_EQ(lines[0], lines[1]);
}

ZEPBMP_FOR_ALL_TABLES(Digests);

}  // namespace
}  // namespace zepbmp::test
