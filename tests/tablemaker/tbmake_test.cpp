// The program as a user calls it.
#include "support/temporary_directory.h"

#include <array>
#include <cstdio>
#include <gtest/gtest.h>
#include <sys/wait.h>

namespace quelmar::testing {
namespace {

struct Outcome {
    int status;
    std::string output;  // both streams
};

Outcome tbmake(const std::string& arguments, const TemporaryDirectory& directory) {
    const std::string command =
        "cd '" + directory.path().string() + "' && '" QUELMAR_TBMAKE "' " + arguments + " 2>&1";
    std::FILE* const pipe = popen(command.c_str(), "r");
    Outcome outcome{};
    std::array<char, 256> part;
    while (std::fgets(part.data(), part.size(), pipe) != nullptr)
        outcome.output += part.data();
    outcome.status = WEXITSTATUS(pclose(pipe));
    return outcome;
}

TEST(Tbmake, MakesPacksChecksAndTells) {
    const TemporaryDirectory directory;
    const struct {
        const char *arguments, *output;
    } steps[] = {
        {"make kqk", "kqk: done, white wins in 10"},
        {"make kqk", ""},
        {"stats kqk",
         "kqk white to move: 18492 won (longest 10), 0 drawn, 0 lost (longest 0), 7137 no position"},
        {"compress kqk.nbw kqk.nbb", "kqk.nbb: 28644 bytes, packed "},
        {"check kqk.nbw kqk.nbw.emd", "kqk.nbw: good\nkqk.nbw.emd: good\n"},
        {"decompress kqk.nbw.emd", ""},
        {"verify kqk --jobs 1", "kqk: 57557 positions, 0 wrong"},
        {"make krk --dir . --compress --quiet", ""},
        {"check krk.nbb.emd", "krk.nbb.emd: good"},
    };
    for (const auto& [arguments, output] : steps) {
        const Outcome outcome = tbmake(arguments, directory);
        EXPECT_EQ(outcome.status, 0) << arguments << ": " << outcome.output;
        EXPECT_NE(outcome.output.find(output), std::string::npos) << arguments << ": " << outcome.output;
    }
}

TEST(Tbmake, TellsWhatIsWrong) {
    const TemporaryDirectory directory;
    const struct {
        const char* arguments;
        int status;
        const char* output;
    } cases[] = {
        {"", 2, "usage:"},
        {"make", 2, "usage:"},
        {"mak kqk", 2, "usage:"},
        {"make kkq", 1, "there is no ending 'kkq'"},
        {"make kqqkqq", 1, "endings of six men are not made"},
        {"make kqk --jobs 0", 1, "not a number from 1"},
        {"make kqk --jobs", 1, "--jobs needs a value"},
        {"make kqk --fast", 1, "unknown option --fast"},
        {"make kqk --dir missing", 1, "No such file or directory"},
        {"make-all 6", 1, "not a number from 3 to 5"},
        {"check kqk.nbw", 1, "kqk.nbw: "},
        {"stats kqk", 1, "no table of kqk"},
        {"verify kqk", 1, "no table of kqk"},
        {"compress nothing.nbw", 1, "nothing.nbw: "},
        {"decompress kqk.nbw", 1, "is not compressed"},
    };
    for (const auto& [arguments, status, output] : cases) {
        const Outcome outcome = tbmake(arguments, directory);
        EXPECT_EQ(outcome.status, status) << arguments;
        EXPECT_NE(outcome.output.find(output), std::string::npos) << arguments << ": " << outcome.output;
    }
}

}  // namespace
}  // namespace quelmar::testing
