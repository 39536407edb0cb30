// Lines out of a pipe: halves, bursts, foreign line ends, the end.
#include "protocol/line_reader.h"

#include <gtest/gtest.h>
#include <optional>
#include <unistd.h>
#include <vector>

namespace quelmar {
namespace {

class LineReaderTest : public ::testing::Test {
protected:
    LineReaderTest() {
        int ends[2];
        EXPECT_EQ(::pipe(ends), 0);
        read_end_ = ends[0];
        write_end_ = ends[1];
        reader_.emplace(read_end_);
    }
    ~LineReaderTest() override {
        ::close(read_end_);
        close_writer();
    }
    void write(std::string_view text) {
        ASSERT_EQ(::write(write_end_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void close_writer() {
        if (write_end_ >= 0)
            ::close(write_end_);
        write_end_ = -1;
    }
    // Every line that is there now.
    std::vector<std::string> lines() {
        reader_->take_in(LineReader::NO_WAIT);
        std::vector<std::string> all;
        for (std::string line; reader_->pop_line(line);)
            all.push_back(line);
        return all;
    }
    std::optional<LineReader> reader_;

private:
    int read_end_ = -1, write_end_ = -1;
};

using Lines = std::vector<std::string>;

TEST_F(LineReaderTest, HalfALineIsNoLine) {
    EXPECT_EQ(lines(), Lines{});
    write("usermove ");
    EXPECT_EQ(lines(), Lines{});
    EXPECT_FALSE(reader_->at_end());
    write("e2e4\nti");
    EXPECT_EQ(lines(), Lines{"usermove e2e4\n"});
    write("me 5\n");
    EXPECT_EQ(lines(), Lines{"time 5\n"});
}

TEST_F(LineReaderTest, SeveralLinesInOneWrite) {
    write("time 1\notim 2\r\n\nusermove e2e4\n");
    EXPECT_EQ(lines(), (Lines{"time 1\n", "otim 2\n", "\n", "usermove e2e4\n"}));
}

TEST_F(LineReaderTest, CarriageReturnSplitFromItsLineFeed) {
    write("go\r");
    EXPECT_EQ(lines(), Lines{});
    write("\nping\r\r\n");
    EXPECT_EQ(lines(), (Lines{"go\n", "ping\r\n"}));
}

TEST_F(LineReaderTest, NulBytesVanish) {
    write(std::string_view("pi\0ng 1\0\n", 9));
    EXPECT_EQ(lines(), Lines{"ping 1\n"});
}

TEST_F(LineReaderTest, TheEndFinishesALastLine) {
    write("quit");
    close_writer();
    reader_->take_in(LineReader::FOREVER);
    EXPECT_FALSE(reader_->input_ended());
    reader_->take_in(LineReader::FOREVER);
    EXPECT_TRUE(reader_->input_ended());
    EXPECT_FALSE(reader_->at_end());
    EXPECT_EQ(lines(), Lines{"quit\n"});
    EXPECT_TRUE(reader_->at_end());
}

TEST_F(LineReaderTest, ALongLineKeepsItsBeginning) {
    const std::string chunk(50000, 'x');
    Lines found;
    for (std::size_t written = 0; written < 2 * LONGEST_LINE; written += chunk.size()) {
        write(chunk);
        EXPECT_EQ(lines(), Lines{});
    }
    write("\nping 1\n");
    found = lines();
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].size(), LONGEST_LINE + 1);
    EXPECT_EQ(found[1], "ping 1\n");
}

TEST(LineReaderOnNothing, AClosedDescriptorIsTheEnd) {
    LineReader closed(1000);
    closed.take_in(LineReader::FOREVER);
    EXPECT_TRUE(closed.at_end());
}

}  // namespace
}  // namespace quelmar
