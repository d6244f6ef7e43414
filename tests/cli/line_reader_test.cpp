#include "line_reader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <system_error>
#include <utility>
#include <vector>

namespace dorvex::cli::line_reader_test {
namespace {

using Lines = std::vector<std::pair<std::string, bool>>;

// Each with whether it had its end.
Lines linesOf(const std::string& contents, char end = '\n') {
  int ends[2];
  EXPECT_EQ(::pipe(ends), 0);
  EXPECT_EQ(::write(ends[1], contents.data(), contents.size()),
            static_cast<ssize_t>(contents.size()));
  ::close(ends[1]);
  LineReader reader(ends[0], end);
  Lines lines;
  while (auto line = reader.next()) lines.emplace_back(std::move(*line), reader.ended());
  ::close(ends[0]);
  return lines;
}

TEST(LineReader, GivesLinesAndSaysWhetherTheyEnded) {
  EXPECT_EQ(linesOf("a\n\nb\n"), (Lines{{"a", true}, {"", true}, {"b", true}}));
  EXPECT_EQ(linesOf("a\nb"), (Lines{{"a", true}, {"b", false}}));
  EXPECT_EQ(linesOf(""), Lines{});
  EXPECT_EQ(linesOf(std::string("a\nb\0c", 5), '\0'), (Lines{{"a\nb", true}, {"c", false}}));
}

TEST(LineReader, GivesALineAsItArrives) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  LineReader reader(ends[0], '\n');
  ASSERT_EQ(::write(ends[1], "a\nb", 3), 3);
  EXPECT_EQ(reader.next(), "a");
  ASSERT_EQ(::write(ends[1], "c\n", 2), 2);
  EXPECT_EQ(reader.next(), "bc");
  ::close(ends[0]);
  ::close(ends[1]);
}

TEST(LineReader, JoinsLinesThatAreLongerThanItsBlocks) {
  const int fd = ::open("/tmp", O_TMPFILE | O_RDWR, 0600);
  ASSERT_GE(fd, 0);
  const std::string text = std::string(100'000, 'x') + "\n" + std::string(200'000, 'y') + "\n";
  ASSERT_EQ(::pwrite(fd, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
  LineReader reader(fd, '\n');
  EXPECT_EQ(reader.next(), std::string(100'000, 'x'));
  EXPECT_EQ(reader.next(), std::string(200'000, 'y'));
  EXPECT_EQ(reader.next(), std::nullopt);
  ::close(fd);
}

TEST(LineReader, TakesAFailureForNoEnd) {
  LineReader reader(-1, '\n');
  EXPECT_THROW(reader.next(), std::system_error);
}

}  // namespace
}  // namespace dorvex::cli::line_reader_test
