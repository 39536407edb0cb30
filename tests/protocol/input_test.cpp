// Lines out of a pipe: halves, bursts, foreign line ends, the end.
#include "platform/platform.h"
#include "protocol/input.h"

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
        reader_->take_in(platform::NO_WAIT);
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

// What arrives in turn, and the lines that are there then.
TEST_F(LineReaderTest, LinesAreWholeAndEndInOneLineFeed) {
    using namespace std::string_view_literals;
    const std::pair<std::string_view, Lines> arrivals[] = {
        {"", {}},
        {"usermove ", {}},
        {"e2e4\nti", {"usermove e2e4\n"}},
        {"me 5\n", {"time 5\n"}},
        {"time 1\notim 2\r\n\nusermove e2e4\n", {"time 1\n", "otim 2\n", "\n", "usermove e2e4\n"}},
        {"go\r", {}},
        {"\nping\r\r\n", {"go\n", "ping\r\n"}},
        {"pi\0ng 1\0\n"sv, {"ping 1\n"}},
    };
    for (const auto& [text, expected] : arrivals) {
        write(text);
        EXPECT_EQ(lines(), expected) << text;
        EXPECT_FALSE(reader_->at_end());
    }
}

TEST_F(LineReaderTest, TheEndFinishesALastLine) {
    write("quit");
    close_writer();
    reader_->take_in(platform::FOREVER);
    EXPECT_FALSE(reader_->input_ended());
    reader_->take_in(platform::FOREVER);
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
    closed.take_in(platform::FOREVER);
    EXPECT_TRUE(closed.at_end());
}

}  // namespace
}  // namespace quelmar
