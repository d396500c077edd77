// Tests for the names and locations of object files.

#include "foreign_text.h"
#include "object_file.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <ostream>

namespace {

QString times(int count, const char* text) {
  return QString::fromUtf8(text).repeated(count);
}

struct Name {
  const char* what;
  QString name;
  QString file;
};

void PrintTo(const Name& name, std::ostream* stream) {
  *stream << name.what;
}

class ObjectName : public testing::TestWithParam<Name> {};

TEST_P(ObjectName, IsFileName) {
  EXPECT_EQ(ulo::objectFileName(GetParam().name).toStdString(), GetParam().file.toStdString());
}

// The emoji of a family of four: one letter of 25 bytes or 11 16-bit units.
constexpr char family[] = "\xf0\x9f\x91\xa9\xe2\x80\x8d\xf0\x9f\x91\xa9\xe2\x80\x8d\xf0\x9f\x91\xa7"
                          "\xe2\x80\x8d\xf0\x9f\x91\xa6";

INSTANTIATE_TEST_SUITE_P(
    Of, ObjectName,
    testing::Values(
        Name{"Plain", "Buy milk.vcs", "Buy milk.vcs"}, Name{"EmptySummary", ".vcs", ".vcs"},
        Name{"Foreign", QString::fromUtf8("K\xc3\xa4se \xe7\x89\x9b.vcs"),
             QString::fromUtf8("K\xc3\xa4se \xe7\x89\x9b.vcs")},
        Name{"Slashes", "../../etc/passwd", ".._.._etc_passwd"},
        Name{"Controls",
             QString::fromUtf8("a\nb\tc\x7f"
                               "d\xc2\x85"
                               "e.vcs"),
             "a_b_c_d_e.vcs"},
        Name{"Nul", QString(QLatin1String("a\0b.vcs", 7)), "a_b.vcs"}, Name{"Null", QString(), "_"},
        Name{"Empty", "", "_"}, Name{"Dot", ".", "_"}, Name{"TwoDots", "..", "__"},
        Name{"ThreeDots", "...", "..."},
        Name{"HalfAPair", QString(QChar(0xD83D)) + ".vcs", "?.vcs"},
        Name{"AtTheLimit", times(251, "a") + ".vcs", times(251, "a") + ".vcs"},
        Name{"OneOver", times(252, "a") + ".vcs", times(251, "a") + ".vcs"},
        Name{"FarOver", times(5000, "a") + ".vcs", times(251, "a") + ".vcs"},
        Name{"TwoBytesEach", times(126, "\xc3\xa4") + ".vcs", times(125, "\xc3\xa4") + ".vcs"},
        Name{"ThreeBytesEach", times(84, "\xe7\x89\x9b") + ".vcs",
             times(83, "\xe7\x89\x9b") + ".vcs"},
        Name{"FourBytesEach", times(63, "\xf0\x9f\x9a\xb2") + ".vcs",
             times(62, "\xf0\x9f\x9a\xb2") + ".vcs"},
        Name{"AnAccentStaysWithItsLetter", times(250, "a") + "e" + QChar(0x301) + ".vcs",
             times(250, "a") + ".vcs"},
        Name{"AFamilyStaysTogether", times(11, family) + ".vcs", times(10, family) + ".vcs"},
        Name{"OneLetterWithoutEnd", "a" + QString(400, QChar(0x301)) + ".vcs",
             "a" + QString(125, QChar(0x301)) + ".vcs"},
        Name{"ALongExtensionIsNone", "a." + times(300, "b"), "a." + times(253, "b")},
        Name{"NothingButADotIsLeft", ".a" + QString(400, QChar(0x301)), "_"}),
    [](const auto& test) { return test.param.what; });

TEST(ObjectFile, ContainsContentUntilDestroyed) {
  const TemporaryDirectory runtime;
  setenv("XDG_RUNTIME_DIR", runtime.path().c_str(), 1);
  const std::string content("a\0b\r\n", 5);
  {
    const ulo::ObjectFile file("x/y.vcs", QByteArrayView(content.data(), 5));
    const std::filesystem::path path(file.path().toStdString());
    EXPECT_EQ(path.filename(), "x_y.vcs");
    std::ifstream stream(path, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), content);
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0600));
  }
  EXPECT_TRUE(std::filesystem::is_empty(runtime.path()));
  unsetenv("XDG_RUNTIME_DIR");
}

TEST(ForeignText, IsOneLineWithoutControlCharacters) {
  EXPECT_EQ(ulo::oneLine("  a \r\n\tb\x01  ", 10), "a b");
  EXPECT_EQ(ulo::oneLine(QString("a%1b%2c").arg(QChar(0x202E), QChar(0x2066)), 10), "abc");
}

TEST(ForeignText, IsCutBetweenLetters) {
  EXPECT_EQ(ulo::oneLine("abcde", 5), "abcde");
  EXPECT_EQ(ulo::oneLine("abcdef", 5), QString("abcde") + QChar(0x2026));
  EXPECT_EQ(ulo::wholeLetters(QString("abe%1f").arg(QChar(0x301)), 3), "ab");
  EXPECT_EQ(ulo::wholeLetters(QString::fromUtf8("\xf0\x9f\x9a\xb2"), 1), "");
}

}  // namespace
