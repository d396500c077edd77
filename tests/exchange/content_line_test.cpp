// Content lines: folding, parameters, text values.
#include "content_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using testing::ElementsAre;

// Each content line with its folding, and "#" and the number of its first line.
std::vector<std::string> split(std::string_view text) {
  std::vector<std::string> result;
  ulo::LineSplitter splitter(text);
  ulo::RawLine line;
  std::string whole;
  while (splitter.next(line)) {
    result.push_back(std::string(line.bytes) + "#" + std::to_string(line.number));
    whole += line.bytes;
  }
  EXPECT_EQ(whole, text);
  return result;
}

std::string unfold(const std::string& bytes) {
  ulo::LineSplitter splitter(bytes);
  ulo::RawLine line;
  EXPECT_TRUE(splitter.next(line));
  std::string buffer;
  return std::string(ulo::unfolded(line, buffer));
}

std::string parse(std::string_view line) {
  const std::optional<ulo::ContentLine> content = ulo::parseContentLine(line);
  return content ? std::string(content->name) + "|" + std::string(content->parameters) + "|" +
                       std::string(content->value)
                 : "none";
}

std::string parameterOf(std::string_view parameters, std::string_view name) {
  return ulo::parameter(parameters, name).value_or("none");
}

TEST(ContentLine, EndsInAnyLineEnd) {
  EXPECT_THAT(split("a\nb\r\nc\rd\r\r\ne"),
              ElementsAre("a\n#1", "b\r\n#2", "c\r#3", "d\r\r\n#4", "e#5"));
  EXPECT_THAT(split("a\r\rb\n\n\nc"), ElementsAre("a\r#1", "\r#2", "b\n#3", "\n#4", "\n#5", "c#6"));
  EXPECT_THAT(split("\r\r\r"), ElementsAre("\r#1", "\r#2", "\r#3"));
  EXPECT_THAT(split(""), ElementsAre());
}

TEST(ContentLine, ContinuesAfterBlank) {
  EXPECT_THAT(split("a\r\n b\n\tc\rd\r e"), ElementsAre("a\r\n b\n\tc\r#1", "d\r e#4"));
  EXPECT_EQ(unfold("a\r\n b\n\tc\r"), "abc");
  EXPECT_EQ(unfold("a\r\n  b"), "a b");
  EXPECT_EQ(unfold(" a\n b"), " ab");
  EXPECT_EQ(unfold("a\n \n b"), "ab");
  EXPECT_EQ(unfold("a\r\r\n b"), "ab");
}

TEST(ContentLine, HasNameParametersAndValue) {
  EXPECT_EQ(parse("SUMMARY:a:b;c"), "SUMMARY||a:b;c");
  EXPECT_EQ(parse("X;A=b;C=\"d:e;f\",g:h"), "X|;A=b;C=\"d:e;f\",g|h");
  EXPECT_EQ(parse("X;ONLY:h"), "X|;ONLY|h");
  EXPECT_EQ(parse("X:"), "X||");
  // A quotation mark without its counterpart is an ordinary character.
  EXPECT_EQ(parse("X;A=\"b:c"), "X|;A=\"b|c");
  for (const char* line : {"", ":a", "X", "X;A=b", ";A=b:c"})
    EXPECT_EQ(parse(line), "none") << line;
}

TEST(ContentLine, ParameterIsDecoded) {
  EXPECT_EQ(parameterOf(";A=b;tzid=c", "TZID"), "c");
  EXPECT_EQ(parameterOf(";A=\"b,c\",d", "A"), "b,c");
  EXPECT_EQ(parameterOf(";A=b,c", "A"), "b");
  EXPECT_EQ(parameterOf(";A=^n^^^'^x^", "A"), "\n^\"^x^");
  EXPECT_EQ(parameterOf(";A=\";B=c\"", "B"), "none");
  EXPECT_EQ(parameterOf(";A", "A"), "");
}

TEST(ContentLine, ParameterTextReadsBack) {
  for (const char* value : {"plain", "Meier, Hans: \"Berlin\"", "a\nb^c;d", ""})
    EXPECT_EQ(parameterOf(";A=" + ulo::parameterText(value), "A"), value);
}

TEST(ContentLine, RemovesParameters) {
  EXPECT_EQ(ulo::withoutParameters(";VALUE=DATE;X=\"a;b\";tzid=c;D", {"VALUE", "TZID"}),
            ";X=\"a;b\";D");
}

TEST(ContentLine, FoldsAt75Bytes) {
  const std::string x75(75, 'x');
  const std::string x74(74, 'x');
  EXPECT_EQ(ulo::foldedLine(x74, "\n"), x74 + "\n");
  EXPECT_EQ(ulo::foldedLine(x75, "\n"), x75 + "\n");
  EXPECT_EQ(ulo::foldedLine(x75 + "y", "\r\n"), x75 + "\r\n y\r\n");
  EXPECT_EQ(ulo::foldedLine(x75 + x74 + "y", "\n"), x75 + "\n " + x74 + "\n y\n");
}

TEST(ContentLine, FoldsBetweenCharacters) {
  for (const std::string letter : {"\xC3\xA4", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"})
    for (std::size_t before = 70; before <= 76; ++before) {
      const std::string line = std::string(before, 'x') + letter + std::string(80, 'y');
      const std::string folded = ulo::foldedLine(line, "\n");
      EXPECT_NE(folded.find(letter), std::string::npos) << before;
      EXPECT_EQ(unfold(folded), line);
      for (std::size_t at = 0; at < folded.size(); at = folded.find('\n', at) + 1)
        EXPECT_LE(folded.find('\n', at) - at, 75U);
    }
  // Bytes that are not UTF-8 are folded as well.
  const std::string bytes(200, '\x80');
  EXPECT_EQ(unfold(ulo::foldedLine(bytes, "\n")), bytes);
}

QString read(std::string_view value) {
  bool isLatin1 = false;
  return ulo::textOfValue(value, isLatin1);
}

TEST(ContentLine, TextHasEscapes) {
  EXPECT_EQ(read("a\\nb\\Nc\\,d\\;e\\\\f\\:g\\xh\\"), "a\nb\nc,d;e\\f:g\\xh\\");
  EXPECT_EQ(ulo::valueOfText("a\nb,c;d\\e:f\r\ng\rh"), "a\\nb\\,c\\;d\\\\e:f\\ng\\nh");
}

TEST(ContentLine, TextReadsBackAsWritten) {
  const QString broken = QString("a") + QChar(0xD800) + "b" + QChar(0xDC00) + QChar(0) + "c";
  EXPECT_EQ(ulo::asWritten(broken), QString("a\uFFFDb\uFFFDc"));
  for (const QString& text : {broken, QString("\uFEFFa"), QString("\\n\\\\n\n"),
                              QString("a\r\n\rb"), QString("\xF0\x9F\x98\x80")})
    EXPECT_EQ(read(ulo::valueOfText(text)), ulo::asWritten(text));
}

TEST(ContentLine, FirstValueEndsAtComma) {
  EXPECT_EQ(ulo::firstValueLength("a,b"), 1U);
  EXPECT_EQ(ulo::firstValueLength("a\\,b\\\\,c"), 6U);
  EXPECT_EQ(ulo::firstValueLength("a\\"), 2U);
  EXPECT_EQ(ulo::firstValueLength(""), 0U);
}

}  // namespace
