// The program as a user calls it.
#include "support/temporary_directory.h"
#include "tablebase/catalogue.h"
#include "tablemaker/table_file.h"

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

Outcome tbmake(const std::string& arguments, const TemporaryDirectory& directory,
               const std::string& before = "") {
    const std::string command =
        "cd '" + directory.path().string() + "' && " + before + "'" QUELMAR_TBMAKE "' " + arguments + " 2>&1";
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
        {"make kqk", "kqk: positions\nkqk: done, white wins in 10"},
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
        {"make --compress", 2, "usage:"},
        {"make-all --jobs 1", 2, "usage:"},
        {"verify --dir .", 2, "usage:"},
        {"mak kqk", 2, "usage:"},
        {"make kxk", 1, "there is no ending 'kxk'\n"},
        {"make krkq", 1, "there is no ending 'krkq'; it is called kqkr\n"},
        {"stats kkbnp", 1, "; it is called kbnpk\n"},
        {"make kqqkqq", 1, "endings of six men are not made"},
        {"make kqk --jobs 0", 1, "not a number from 1"},
        {"make kqk --jobs", 1, "--jobs needs a value"},
        {"make kqk --fast", 2, "unknown option --fast"},
        {"make kqk --dir missing", 1, "tbmake: missing: there is no such directory"},
        {"verify kqk --dir missing", 1, "tbmake: missing: there is no such directory"},
        {"make kqk --dir /dev/null", 1, "tbmake: /dev/null: is not a directory"},
        {"make kqk --dir /proc", 1, "tbmake: /proc: cannot be written: "},
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

// Only the files of table names, and only where no process holds them.
TEST(Tbmake, RemovesWhatEndedRunsLeft) {
    const TemporaryDirectory directory;
    const std::string left[] = {"kqk.nbw.part1", "krk.nbb.emd.part4711"};
    const std::string kept[] = {"kqk.nbw.part", "film.part1", "kqk.nbw.part1a", "kbk.nbw.part1"};
    for (const auto& names : {std::span<const std::string>(left), std::span<const std::string>(kept)})
        for (const std::string& name : names)
            tablemaker::write_file(directory.path() / name, {});
    EXPECT_EQ(tbmake("make knk", directory, "exec 9<kbk.nbw.part1; flock 9; ").status, 0);
    for (const std::string& name : left)
        EXPECT_FALSE(exists(directory.path() / name)) << name;
    for (const std::string& name : kept)
        EXPECT_TRUE(exists(directory.path() / name)) << name;
}

TEST(Tbmake, TellsHowMuchMemoryIsMissing) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "its own memory does not fit into the limit";
#endif
    const TemporaryDirectory directory;
    for (const std::string name : {"kbk", "kbbk"})
        for (const Side side : {WHITE, BLACK})
            tablemaker::write_file(
                directory.path() / (name + (side == WHITE ? ".nbw" : ".nbb")),
                std::vector<u8>(ending(ending_by_name(name)).entry_count[static_cast<std::size_t>(side)]));
    const Outcome outcome = tbmake("make kbbbk --jobs 1", directory, "ulimit -v 300000; ");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "tbmake: kbbbk: out of memory, this takes 503.6 MB\n");
}

}  // namespace
}  // namespace quelmar::testing
