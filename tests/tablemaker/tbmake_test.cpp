// The program as a user calls it.
#include "support/engine.h"
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

// What is asked, and what has to be said, stands in tests/data/tbmake.txt.
TEST(Tbmake, MakesPacksChecksAndTells) {
    const TemporaryDirectory directory;
    for (const Words& fields : data_rows("tbmake.txt")) {
        ASSERT_GE(fields.size(), 3U) << fields[0];
        const Outcome outcome = tbmake(fields[0], directory);
        EXPECT_EQ(outcome.status, std::stoi(fields[1])) << fields[0] << ": " << outcome.output;
        EXPECT_NE(outcome.output.find(with_escapes(fields[2])), std::string::npos)
            << fields[0] << ": " << outcome.output;
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
            tablemaker::write_file(directory.path() / (name + (side == WHITE ? ".nbw" : ".nbb")),
                                   std::vector<u8>(ending(ending_by_name(name)).entry_count[side]));
    const Outcome outcome = tbmake("make kbbbk --jobs 1", directory, "ulimit -v 300000; ");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "tbmake: kbbbk: out of memory, this takes 503.6 MB\n");
}

}  // namespace
}  // namespace quelmar::testing
