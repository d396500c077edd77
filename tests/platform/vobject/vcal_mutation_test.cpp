// Damaged texts. The library must survive all of them, and must read a clean text like its repaired
// copy.
#include "vcal_guard.h"

#include "bare_library.h"
#include "log_capture.h"

#include <gtest/gtest.h>

#include <array>
#include <random>

namespace {

constexpr std::array<const char*, 3> seeds = {
    "BEGIN:VCALENDAR\r\nVERSION:1.0\r\nPRODID:x\r\nBEGIN:VTODO\r\nSTATUS:NEEDS ACTION\r\n"
    "SUMMARY;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:K=C3=A4se=\r\n kaufen =3D\r\n"
    "DESCRIPTION:a b\r\n c, d\r\nCATEGORIES:one;two\r\nDUE:20060305T120000Z\r\n"
    "DALARM:20060305T120000Z;;;text;own\r\nPRIORITY:1\r\nEND:VTODO\r\n"
    "BEGIN:VEVENT\r\nSUMMARY:e\r\nEND:VEVENT\r\n"
    "BEGIN:VTODO\r\nCOMPLETED:20060305T120000Z\r\nEND:VTODO\r\nEND:VCALENDAR\r\n",
    "BEGIN:VCALENDAR\nVERSION:2.0\nBEGIN:VTODO\nSUMMARY;LANGUAGE=de:Käse\n  kaufen\n"
    "DESCRIPTION;X=\"a:b;c\":one\\ntwo\nBEGIN:VALARM\nTRIGGER:-PT15M\nEND:VALARM\nEND:VTODO\n"
    "END:VCALENDAR\n",
    "BEGIN:VCARD\r\nN:a;b\r\nEND:VCARD\r\nBEGIN:VCALENDAR\r\nBEGIN:VTODO\r\n"
    "SUMMARY;ENCODING=BASE64:QUJD\r\n\r\nDUE:\r\nDESCRIPTION;QP:=c3=a4; =\r\n\r\n"
    "END:VTODO\r\nEND:VCALENDAR\r\n",
};

constexpr std::array<const char*, 40> fragments = {"=",
                                                   "=\r\n",
                                                   "\r\n ",
                                                   ";",
                                                   ":",
                                                   "\"",
                                                   "=C3",
                                                   "=c3",
                                                   "\r",
                                                   "\n",
                                                   "\r\r\n",
                                                   "==",
                                                   "\xFF",
                                                   "\t",
                                                   " ",
                                                   ".",
                                                   "A.",
                                                   "=00",
                                                   "=0A",
                                                   "\r\n\r\n",
                                                   ";ENCODING=QUOTED-PRINTABLE",
                                                   ";QP",
                                                   ";BASE64",
                                                   ";CHARSET=UTF-8",
                                                   ";cHARSET=",
                                                   ";RUNTIME=x",
                                                   "BEGIN:VTODO\r\n",
                                                   "END:VTODO\r\n",
                                                   "BEGIN:VALARM\r\n",
                                                   "END:VALARM\r\n",
                                                   "BEGIN:VEVENT\r\n",
                                                   "END:VEVENT\r\n",
                                                   "BEGIN:VCALENDAR\r\n",
                                                   "END:VCALENDAR\r\n",
                                                   "BEGIN",
                                                   "\xEF\xBB\xBF",
                                                   "VERSION:2.0\r\n",
                                                   "DALARM:;;;;x\r\n",
                                                   "SUMMARY;QP:\r\n",
                                                   "SUMMARY;BASE64:QQ==\r\n"};

std::string mutated(std::mt19937& random) {
  std::string text = seeds[random() % seeds.size()];
  for (std::size_t change = 1 + random() % 5; change > 0; --change) {
    const std::size_t at = random() % (text.size() + 1);
    switch (random() % 5) {
    case 0:
      text.insert(at, 1, static_cast<char>(random()));
      break;
    case 1:
      text.erase(at, 1 + random() % 8);
      break;
    case 2:
    case 3:
      text.insert(at, fragments[random() % fragments.size()]);
      break;
    default:
      text.insert(at, text.substr(random() % (text.size() + 1), random() % 60));
      break;
    }
  }
  return text;
}

class VcalMutation : public testing::TestWithParam<unsigned> {};

TEST_P(VcalMutation, IsReadLikeItsRepairedCopy) {
  LogCapture log;
  std::mt19937 random(GetParam());
  int clean = 0;
  int readable = 0;
  for (int i = 0; i < 5000; ++i) {
    const std::string text = mutated(random);
    const ulo::TextReport report = ulo::examineText(text);
    const bool isClean = ulo::GuardedText::fromMemory(text, {}).isClean();
    const bool isReadable =
        report.problem == ulo::TextProblem::none || report.problem == ulo::TextProblem::noTodo;
    const auto todos = parseGuarded(text);
    ASSERT_EQ(todos.has_value(), isReadable || isClean) << text;
    ASSERT_EQ(todos ? todos->size() : 0, report.todos) << text;
    if (isClean && isReadable) {
      const auto repaired = parseGuarded("\xEF\xBB\xBF" + text);
      ASSERT_TRUE(repaired) << text;
      ASSERT_EQ(onlyGuarded(*todos), onlyGuarded(*repaired)) << text;
    }
    clean += isClean ? 1 : 0;
    readable += isReadable ? 1 : 0;
  }
  // Some mutations make a text unreadable, and some leave it clean.
  EXPECT_GT(clean, 100);
  EXPECT_GT(readable, 1000);
  EXPECT_LT(readable, 4500);
}

INSTANTIATE_TEST_SUITE_P(Seed, VcalMutation, testing::Values(1U, 2U, 3U));

}  // namespace
