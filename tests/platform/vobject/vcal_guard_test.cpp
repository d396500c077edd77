#include "vcal_texts.h"

#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sys/stat.h>

using testing::ElementsAre;
using ulo::examineText;
using ulo::GuardedText;
using ulo::TextProblem;
using namespace std::string_literals;

namespace {

// Lines in a to-do and the properties read from them. DUE:D follows the lines of each case, to
// detect a value that swallows the next line.
struct Reading {
  const char* name;
  std::string lines;
  TodoProperties properties;
  bool clean;
  const char* version = "1.0";
};

void PrintTo(const Reading& reading, std::ostream* out) {
  *out << reading.name;
}

class VcalReading : public testing::TestWithParam<Reading> {};

TEST_P(VcalReading, IsRight) {
  const Reading& reading = GetParam();
  const std::string text = calendar(todo(reading.lines + "\r\nDUE:D\r\n"), reading.version);
  TodoProperties expected = reading.properties;
  expected.emplace_back("DUE=D");
  EXPECT_EQ(propertiesOf(text), expected);
  EXPECT_EQ(isClean(text), reading.clean);
  // The repaired copy is read like the clean text.
  EXPECT_EQ(propertiesOf(byteOrderMark + text), expected);
}

const std::string qp = "SUMMARY;ENCODING=QUOTED-PRINTABLE:";

const std::vector<Reading> readings = {
    // Plain values
    {"plain", "SUMMARY:a", {"SUMMARY=a"}, true},
    {"lower_case_name", "summary:a", {"SUMMARY=a"}, true},
    {"grouped_name", "A.b.SUMMARY:a", {"SUMMARY=a"}, true},
    {"blank_before_colon", "SUMMARY :a", {"SUMMARY=a"}, false},
    {"blank_at_start", "SUMMARY: \ta", {"SUMMARY=a"}, true},
    {"blanks_at_end", "SUMMARY:a  ", {"SUMMARY=a  "}, true},
    {"colons", "SUMMARY:a:b::c", {"SUMMARY=a:b::c"}, true},
    {"equals_signs", "SUMMARY:K=C3=A4 = 1=", {"SUMMARY=K=C3=A4 = 1="}, true},
    {"utf8", "SUMMARY;CHARSET=UTF-8:Käse 日", {"SUMMARY[UTF-8]=Käse 日"}, true},
    {"no_charset", "SUMMARY:K\xE4se", {"SUMMARY=K\xE4se"}, true},
    {"byte_ff", "SUMMARY;CHARSET=ISO-8859-1:a\xFFz", {"SUMMARY[ISO-8859-1]=a\xFFz"}, false},
    {"controls", "SUMMARY:a\x01\x0B\x1A z", {"SUMMARY=a\x01\x0B\x1A z"}, true},
    {"zero_byte", "SUMMARY:a\0b"s, {"SUMMARY=ab"}, false},
    {"backslashes", "SUMMARY:a\\nb\\,c\\\\", {"SUMMARY=a\\nb\\,c\\\\"}, true},
    {"escaped_semicolon", "SUMMARY:a\\;b", {"SUMMARY=a\\;b"}, true},
    {"needs_action", "STATUS:NEEDS-ACTION", {"STATUS=NEEDS-ACTION"}, true},
    {"category_is_not_read", "CATEGORY:a", {}, true},

    // Semicolons
    {"semicolon", "CATEGORIES:a;b ;c", {"CATEGORIES=a;b ;c"}, true},
    {"semicolon_and_blank", "SUMMARY:a; b;\tc", {"SUMMARY=a; b;\tc"}, false},
    {"empty_fields", "SUMMARY:a;;b", {"SUMMARY=a;;b"}, false},
    {"semicolon_first", "SUMMARY:;a", {"SUMMARY=;a"}, false},
    {"semicolon_last", "SUMMARY:a;", {"SUMMARY=a;"}, false},
    {"semicolons_only", "SUMMARY:;;", {"SUMMARY=;;"}, false},
    {"semicolons_200",
     "SUMMARY:" + repeat("a;", 200) + "a",
     {"SUMMARY=" + repeat("a;", 200) + "a"},
     false},

    // Properties without a value affect neither their field nor the next property
    {"empty", "SUMMARY:", {}, false},
    {"empty_then_other", "SUMMARY:\r\nPRIORITY:1", {"PRIORITY=1"}, false},
    {"blank_only", "SUMMARY:  \t", {}, false},
    {"empty_encoded", qp, {}, false},
    {"empty_encoded_twice", qp + "\r\n" + qp, {}, false},
    {"empty_base64", "SUMMARY;ENCODING=BASE64:", {}, false},
    {"empty_keeps_earlier", "SUMMARY:a\r\nSUMMARY:", {"SUMMARY=a"}, false},
    {"empty_alarm", "DALARM:", {}, false},

    // Folds
    {"fold", "SUMMARY:a\r\n b\r\n\tc", {"SUMMARY=a b c"}, true},
    {"fold_more_blanks", "SUMMARY:a\r\n   b", {"SUMMARY=a   b"}, true},
    {"fold_blank_line", "SUMMARY:a\r\n ", {"SUMMARY=a "}, true},
    {"fold_of_empty_value", "SUMMARY:\r\n a", {"SUMMARY=a"}, false},
    {"fold_after_semicolon", "SUMMARY:a;\r\n  b", {"SUMMARY=a;  b"}, false},
    {"fold_in_parameters",
     "SUMMARY;CHARSET=UTF-8;\r\n ENCODING=QUOTED-PRINTABLE:=C3=A4",
     {"SUMMARY[UTF-8]=ä"},
     false},
    {"fold_in_encoded", qp + "a=\r\nb\r\n c", {"SUMMARY=ab c"}, false},
    {"no_fold_after_blank_line", "SUMMARY:a\r\n\r\n b", {"SUMMARY=a"}, false},
    {"fold_2_0", "SUMMARY:a\r\n b\r\n\tc\r\n  d", {"SUMMARY=abc d"}, false, "2.0"},
    {"fold_2_0_in_name", "SUMM\r\n ARY;CHAR\r\n SET=UTF-8:ä", {"SUMMARY[UTF-8]=ä"}, false, "2.0"},
    {"fold_2_0_in_encoded", qp + "=C3\r\n =A4", {"SUMMARY=ä"}, false, "2.0"},

    // Quoted-printable
    {"encoded", qp + "a=3D=C3=A4; b ", {"SUMMARY=a=ä; b "}, true},
    {"encoded_leading_blank", qp + " a", {"SUMMARY= a"}, true},
    {"encoded_only_blanks", qp + "  ", {"SUMMARY=  "}, true},
    {"encoded_line_breaks", qp + "a=0D=0Ab=0Ac", {"SUMMARY=a\r\nb\nc"}, true},
    {"encoded_nameless", "SUMMARY;QUOTED-PRINTABLE:=41", {"SUMMARY=A"}, true},
    {"encoded_short_name", "SUMMARY;ENCODING=QP:=41", {"SUMMARY=A"}, true},
    {"encoded_lower_case", "summary;encoding=quoted-printable:=41", {"SUMMARY=A"}, true},
    {"encoded_quoted_name", "SUMMARY;ENCODING=\"QUOTED-PRINTABLE\":=41", {"SUMMARY=A"}, false},
    {"encoded_twice",
     "SUMMARY;QUOTED-PRINTABLE;ENCODING=QUOTED-PRINTABLE:=41\r\nPRIORITY:=41",
     {"SUMMARY=A", "PRIORITY==41"},
     false},
    {"soft_break", qp + "a=\r\nb=\r\n c", {"SUMMARY=ab c"}, true},
    {"soft_break_and_empty_line", qp + "a=\r\n", {"SUMMARY=a"}, true},
    {"soft_break_and_blanks", qp + "a= \t\r\nb", {"SUMMARY=ab"}, false},
    {"soft_break_cr_cr_lf", qp + "a=\r\r\nb\r\r", {"SUMMARY=ab"}, false},
    {"soft_break_first", qp + "=\r\na", {"SUMMARY=a"}, true},
    {"soft_break_after_equals", qp + "a==\r\nb", {"SUMMARY=a=b"}, false},
    {"soft_break_inside_escape", qp + "=C3=\r\n=A4", {"SUMMARY=ä"}, true},
    {"lower_case_digits", qp + "=c3=A4", {"SUMMARY=ä"}, false},
    {"bare_equals", qp + "a=b = c", {"SUMMARY=a=b = c"}, false},
    {"half_an_escape", qp + "a=4", {"SUMMARY=a=4"}, false},
    {"not_an_escape", qp + "a=G1=1G", {"SUMMARY=a=G1=1G"}, false},
    {"encoded_zero", qp + "a=00b", {"SUMMARY=ab"}, false},
    {"encoded_raw_ff", qp + "a\xFF", {"SUMMARY=a\xFF"}, false},
    {"encoded_ff", qp + "a=FF", {"SUMMARY=a\xFF"}, true},
    {"encoded_semicolon_first", qp + ";a", {"SUMMARY=;a"}, false},

    // BASE64
    {"base64",
     "SUMMARY;CHARSET=UTF-8;ENCODING=BASE64:S8Okc2U=\r\n",
     {"SUMMARY[UTF-8]=Käse"},
     false},
    {"base64_nameless", "SUMMARY;BASE64:YWI=\r\n", {"SUMMARY=ab"}, false},
    {"base64_without_blank_line", "SUMMARY;ENCODING=BASE64:YWI=", {"SUMMARY=ab"}, false},
    {"base64_folded", "SUMMARY;ENCODING=BASE64:\r\n  YW\r\n  I=\r\n", {"SUMMARY=ab"}, false},
    {"base64_lines", "SUMMARY;ENCODING=BASE64:\r\nYWJj\r\nYWI=", {"SUMMARY=abcab"}, false},
    {"base64_much_padding", "SUMMARY;ENCODING=BASE64:YQ====\r\n", {"SUMMARY=a"}, false},
    {"base64_double_padding", "SUMMARY;ENCODING=BASE64:YQ==YQ==\r\n", {"SUMMARY=a"}, false},
    {"base64_other_characters", "SUMMARY;ENCODING=BASE64:Y*W I=\r\n", {"SUMMARY=ab"}, false},
    {"base64_binary", "SUMMARY;ENCODING=BASE64:AAEC\r\n", {}, false},
    {"base64_as_charset", "SUMMARY;CHARSET=BASE64:YWI=\r\n", {"SUMMARY=ab"}, false},
    {"base64_wins", "SUMMARY;QP;BASE64:YWI=\r\n", {"SUMMARY=ab"}, false},

    // Parameters
    {"encoding_8bit", "SUMMARY;CHARSET=UTF-8;ENCODING=8BIT:ä", {"SUMMARY[UTF-8]=ä"}, false},
    {"encoding_7bit", "SUMMARY;ENCODING=7BIT:a", {"SUMMARY=a"}, false},
    {"parameter_without_value", "SUMMARY;INTL:a", {"SUMMARY=a"}, true},
    {"x_parameter", "SUMMARY;X-A-B=1:a", {"SUMMARY=a"}, false},
    {"quoted_value", "SUMMARY;X=\"a:b;c\":v", {"SUMMARY=v"}, false},
    {"quotation_without_end", "SUMMARY;X=\"a:b", {"SUMMARY=b"}, false},
    {"quoted_charset", "SUMMARY;CHARSET=\"UTF-8\":ä", {"SUMMARY[UTF-8]=ä"}, false},
    {"blanks_in_value", "SUMMARY;CN=A B:a", {"SUMMARY=a"}, false},
    {"empty_parameter", "SUMMARY;:a", {"SUMMARY=a"}, false},
    {"blanks_around", "SUMMARY ; CHARSET = UTF-8 : a", {"SUMMARY[UTF-8]=a"}, false},
    {"last_charset_wins", "SUMMARY;CHARSET=GBK;CHARSET=UTF-8:ä", {"SUMMARY[UTF-8]=ä"}, true},
    {"charset_in_lower_case", "SUMMARY;CHARSET=utf-8:ä", {"SUMMARY[utf-8]=ä"}, true},
    {"other_charset", "SUMMARY;charset=utf-8:a", {"SUMMARY=a"}, false},
    {"charset_without_value", "SUMMARY;CHARSET=UTF-8;CHARSET:a", {"SUMMARY=a"}, true},
    {"unreadable_charset", "SUMMARY;CHARSET=UTF-8;CHARSET=8859:a", {"SUMMARY=a"}, false},
    {"component_word", "SUMMARY;X=BEGIN:VTODO", {"SUMMARY=VTODO"}, false},
    {"many_parameters", "SUMMARY" + repeat(";A", 17) + ":a", {"SUMMARY=a"}, false},
    {"alarm_parameter",
     "DALARM;RUNTIME=x:t;a;b;c;d",
     {"DALARM{RUNTIME=t;SNOOZETIME=a;REPEATCOUNT=b;DISPLAYSTRING=c;}=d"},
     false},

    // Alarms keep their fields and do not get a value that they did not have
    {"alarm", "DALARM:t", {"DALARM{RUNTIME=t;}="}, true},
    {"alarm_fields", "DALARM:t;;;x", {"DALARM{RUNTIME=t;DISPLAYSTRING=x;}="}, true},
    {"alarm_value",
     "DALARM:t;a;b;c;d;e",
     {"DALARM{RUNTIME=t;SNOOZETIME=a;REPEATCOUNT=b;DISPLAYSTRING=c;}=d;e"},
     true},
    {"alarm_folded_2_0",
     "DALARM:t;;;\r\n x",
     {"DALARM{RUNTIME=t;DISPLAYSTRING=x;}="},
     false,
     "2.0"},
    {"alarm_encoded",
     "DALARM;ENCODING=QUOTED-PRINTABLE:t=3B;;;d",
     {"DALARM{RUNTIME=t;;;;d;}="},
     true},
    {"alarm_ff", "DALARM:t;;;\xFF", {}, false},
    {"alarm_of_40_fields", "DALARM:t" + repeat(";", 40), {"DALARM{RUNTIME=t;}="}, true},

    // Lines that are not properties
    {"no_colon", "NO COLON", {}, false},
    {"digit_first", "1SUMMARY:a", {}, false},
    {"hyphen_first", "-SUMMARY:a", {}, false},
    {"byte_over_127_first", "\xC3\xA4SUMMARY:a", {}, false},
    {"blank_in_name", "X SUMMARY:a", {}, false},
    {"bad_groups", "A..SUMMARY:a\r\n.SUMMARY:b\r\nSUMMARY.:c", {}, false},
    {"only_a_colon", ":a", {}, false},
    {"end_with_parameter", "END;X:VTODO", {}, true},
    {"begin_in_group", "A.BEGIN:VALARM", {}, false},
    {"begin_of_nothing", "BEGIN:", {}, false},
    {"end_of_nothing", "END:VALARM", {}, true},
    {"end_of_other", "END:VEVENT", {}, false},
    {"indented", "\r\n   SUMMARY:a", {"SUMMARY=a"}, false},

    // Line ends
    {"lone_cr", "SUMMARY:a\rPRIORITY:1", {"SUMMARY=a", "PRIORITY=1"}, false},
    {"lf", "SUMMARY:a\nPRIORITY:1\n b", {"SUMMARY=a", "PRIORITY=1 b"}, true},
    {"cr_cr_lf", "SUMMARY:a\r\r\n b", {"SUMMARY=a b"}, false},
    {"cr_cr", "SUMMARY;QP:a=\r\rPRIORITY:1", {"SUMMARY=a", "PRIORITY=1"}, false},

    // Components in a to-do
    {"alarm_component",
     "BEGIN:VALARM\r\nDESCRIPTION:x\r\nSUMMARY;QP:=\r\nEND:VALARM\r\nEND:VALARM\r\nSUMMARY:a",
     {"SUMMARY=a"},
     false},
    {"nested_todo", "BEGIN:VTODO\r\nSUMMARY:x\r\nEND:VTODO\r\nSUMMARY:a", {"SUMMARY=a"}, false},
    {"long_component",
     "BEGIN:" + std::string(40, 'X') + "\r\nSUMMARY:x\r\nEND:" + std::string(40, 'X'),
     {},
     false},
};

INSTANTIATE_TEST_SUITE_P(All, VcalReading, testing::ValuesIn(readings),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(VcalGuard, NamesAreUnique) {
  std::vector<std::string> names;
  for (const Reading& reading : readings)
    names.emplace_back(reading.name);
  std::sort(names.begin(), names.end());
  EXPECT_EQ(std::adjacent_find(names.begin(), names.end()), names.end());
}

// The library keeps words in the case in which they first occurred. CHARSET must not be one of
// them.
TEST(VcalGuard, TextDoesNotAffectNextOne) {
  const LogCapture quiet;
  for (const char* first : {"SUMMARY;cHARSET=x:a", "SUMMARY;X=cHARSET:a", "cHARSET.SUMMARY:a",
                            "SUMMARY;cHARSET.x:a", "SUMMARY;CHARSET=cHARSET:a"}) {
    parseGuarded(calendar(todo(std::string(first) + "\r\n")));
    EXPECT_THAT(propertiesOf(calendar(todo("SUMMARY;CHARSET=UTF-8:a\r\n"))),
                ElementsAre("SUMMARY[UTF-8]=a"))
        << first;
  }
}

TEST(VcalGuard, PiecesContainOnlyTodos) {
  const LogCapture quiet;
  const std::string text =
      byteOrderMark + calendar("X-A;Q=\"1\":x\r\nBEGIN:VEVENT\r\nSUMMARY:e\r\nEND:VEVENT\r\n" +
                               todo("UID:1\r\nSUMMARY;X-B=1:a; b\r\nPRIORITY:1\r\n"));
  EXPECT_THAT(piecesOf(text),
              ElementsAre("BEGIN:VCALENDAR\r\nVERSION:1.0\r\nBEGIN:VTODO\r\n"
                          "SUMMARY;ENCODING=QUOTED-PRINTABLE:a=3B b\r\nPRIORITY:1\r\n"
                          "END:VTODO\r\nEND:VCALENDAR\r\n"));
}

// The library takes longer to read a property with an encoding.
TEST(VcalGuard, OmitsEncodingWithoutEffect) {
  const LogCapture quiet;
  const auto valueOf = [](const std::string& value) {
    const std::string before = "BEGIN:VTODO\r\nSUMMARY;CHARSET=UTF-8";
    const std::vector<std::string> pieces = piecesOf(
        byteOrderMark +
        calendar(todo("SUMMARY;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:" + value + "\r\n")));
    const std::string::size_type at = pieces.front().find(before) + before.size();
    return pieces.front().substr(at, pieces.front().find("\r\n", at) - at);
  };
  const std::string encoded = ";ENCODING=QUOTED-PRINTABLE:";
  EXPECT_EQ(valueOf("Buy milk, 2 l"), ":Buy milk, 2 l");
  EXPECT_EQ(valueOf("a:b"), ":a:b");
  EXPECT_EQ(valueOf("K=C3=A4se"), encoded + "K=C3=A4se");
  EXPECT_EQ(valueOf("long=\r\n er"), encoded + "long er");
  EXPECT_EQ(valueOf("a;b"), encoded + "a;b");
  EXPECT_EQ(valueOf(" a"), encoded + " a");
  EXPECT_EQ(valueOf("a "), encoded + "a ");
  EXPECT_EQ(valueOf("a\tb"), encoded + "a\tb");
}

TEST(VcalGuard, TellsManyHeadersApart) {
  const LogCapture quiet;
  std::string todos;
  std::vector<TodoProperties> expected;
  for (int i = 0; i < 200; ++i) {
    const std::string header = "SUMMARY;X-" + std::to_string(i % 100);
    todos += todo(header + ":=41\r\n") + todo(header + ";QUOTED-PRINTABLE:=41\r\n");
    expected.insert(expected.end(), {{"SUMMARY==41"}, {"SUMMARY=A"}});
  }
  const auto read = parseGuarded(byteOrderMark + calendar(todos));
  ASSERT_TRUE(read);
  EXPECT_EQ(onlyGuarded(*read), expected);
}

TEST(VcalGuard, TodosOfAllCalendarsKeepTheirOrder) {
  const LogCapture quiet;
  const std::string card = "BEGIN:VCARD\r\nN:a;b\r\nEND:VCARD\r\n";
  const std::string text = calendar(todo("SUMMARY:1\r\n") + todo("SUMMARY:2\r\n")) + card +
                           calendar(card + todo("SUMMARY:\r\n") + todo("SUMMARY:4\r\n")) + card;
  const auto todos = parseGuarded(text);
  ASSERT_TRUE(todos);
  EXPECT_THAT(onlyGuarded(*todos),
              ElementsAre(TodoProperties{"SUMMARY=1"}, TodoProperties{"SUMMARY=2"},
                          TodoProperties{}, TodoProperties{"SUMMARY=4"}));
  EXPECT_EQ(examineText(text).todos, 4U);
}

TEST(VcalGuard, AcceptsByteOrderMarkBeforeEachCalendar) {
  const LogCapture quiet;
  const auto todos = parseGuarded(byteOrderMark + calendar(todo("SUMMARY:1\r\n")) + byteOrderMark +
                                  calendar(todo("SUMMARY:2\r\n")));
  ASSERT_TRUE(todos);
  EXPECT_THAT(onlyGuarded(*todos),
              ElementsAre(TodoProperties{"SUMMARY=1"}, TodoProperties{"SUMMARY=2"}));
}

TEST(VcalGuard, FoldsFollowVersionOfTheirCalendar) {
  const LogCapture quiet;
  const std::string item = todo("SUMMARY:a\r\n b\r\n");
  const auto todos = parseGuarded(calendar(item, "2.0") + "BEGIN:VCALENDAR\r\n" + item +
                                  "END:VCALENDAR\r\n" + calendar(item, " 2.0"));
  ASSERT_TRUE(todos);
  EXPECT_THAT(onlyGuarded(*todos),
              ElementsAre(TodoProperties{"SUMMARY=ab"}, TodoProperties{"SUMMARY=a b"},
                          TodoProperties{"SUMMARY=ab"}));
}

TEST(VcalGuard, UnknownComponentsBelongToCalendar) {
  const std::string text = calendar("BEGIN:VTIMEZONE\r\nTZID:x\r\n" + todo("SUMMARY:a\r\n"));
  EXPECT_TRUE(isClean(text));
  EXPECT_THAT(propertiesOf(text), ElementsAre("SUMMARY=a"));
  EXPECT_THAT(propertiesOf(byteOrderMark + text), ElementsAre("SUMMARY=a"));
}

TEST(VcalGuard, IgnoresPropertyNamedLikeComponent) {
  const std::string text = calendar("VTODO:x\r\n" + todo("SUMMARY:a\r\n"));
  EXPECT_THAT(propertiesOf(text), ElementsAre("SUMMARY=a"));
}

TEST(VcalGuard, OmitsVcardInCalendar) {
  const std::string text = calendar("BEGIN:VCARD\r\nN:x\r\nEND:VCARD\r\n" + oneTodo);
  EXPECT_FALSE(isClean(text));
  EXPECT_THAT(propertiesOf(text), ElementsAre("SUMMARY=a"));
}

TEST(VcalGuard, IgnoresTodosInEvent) {
  const std::string text =
      calendar("BEGIN:VEVENT\r\n" + todo("SUMMARY:x\r\n") + "END:VEVENT\r\n" + todo("DUE:D\r\n"));
  EXPECT_THAT(propertiesOf(text), ElementsAre("DUE=D"));
}

TEST(VcalGuard, OmitsTextAroundCalendars) {
  const std::string text =
      "From: a\r\n\r\n" + calendar(todo("SUMMARY:a\r\n")) + "-- \r\nEND:VTODO\r\n\x1A\0"s;
  EXPECT_FALSE(isClean(text));
  EXPECT_THAT(propertiesOf(text), ElementsAre("SUMMARY=a"));
}

// A whole text, and the report on it.
struct Examination {
  const char* name;
  std::string text;
  TextProblem problem;
  std::size_t line;
  std::size_t todos;
  bool clean;
};

void PrintTo(const Examination& examination, std::ostream* out) {
  *out << examination.name;
}

class VcalExamination : public testing::TestWithParam<Examination> {};

TEST_P(VcalExamination, IsRight) {
  const LogCapture quiet;
  const Examination& examination = GetParam();
  TemporaryDirectory directory;
  const std::string path = directory.path() / "a.vcs";
  std::ofstream(path, std::ios::binary) << examination.text;
  for (const ulo::TextReport& report : {examineText(examination.text), ulo::examineFile(path)}) {
    EXPECT_EQ(report.problem, examination.problem);
    EXPECT_EQ(report.line, examination.line);
    EXPECT_EQ(report.todos, examination.todos);
  }
  GuardedText file = GuardedText::fromFile(path, guardedNames());
  EXPECT_EQ(file.isClean(), examination.clean);
  EXPECT_EQ(isClean(examination.text), examination.clean);

  // A text is read if it has a calendar and no END is missing.
  const bool readable =
      examination.problem == TextProblem::none || examination.problem == TextProblem::noTodo;
  const auto todos = parseGuarded(examination.text);
  EXPECT_EQ(todos.has_value(), readable || examination.clean);
  EXPECT_EQ(todos ? todos->size() : 0, examination.todos);
}

const std::vector<Examination> examinations = {
    {"one", calendar(oneTodo), TextProblem::none, 0, 1, true},
    {"without_last_line_end", calendar(oneTodo).substr(0, calendar(oneTodo).size() - 2),
     TextProblem::none, 0, 1, true},
    {"blank_lines_first", "\r\n\r\n" + calendar(oneTodo), TextProblem::none, 0, 1, true},
    {"lower_case", "begin:vcalendar\nbegin:vtodo\nsummary:a\nend:vtodo\nend:vcalendar\n",
     TextProblem::none, 0, 1, true},
    {"byte_order_mark", byteOrderMark + calendar(oneTodo), TextProblem::none, 0, 1, false},
    {"empty_todo", calendar(todo("")), TextProblem::none, 0, 1, true},
    {"indented_begin", " " + calendar(oneTodo), TextProblem::none, 0, 1, false},
    {"blanks_after_names", "BEGIN:VCALENDAR \r\nBEGIN:VTODO\t\r\nEND:VTODO \r\nEND:VCALENDAR \r\n",
     TextProblem::none, 0, 1, true},
    {"empty", "", TextProblem::notCalendar, 0, 0, false},
    {"blank", "\r\n  \r\n", TextProblem::notCalendar, 0, 0, false},
    {"prose", "Dear all,\nbring bread.\n", TextProblem::notCalendar, 0, 0, false},
    {"utf16", "\xFF\xFE" + std::string("B\0E\0G\0I\0N\0:\0V\0C\0A\0L\0\r\0\n\0", 24),
     TextProblem::notCalendar, 0, 0, false},
    {"vcard", "BEGIN:VCARD\r\nN:a\r\nEND:VCARD\r\n", TextProblem::notCalendar, 0, 0, true},
    {"dirty_vcard", "BEGIN:VCARD\r\nN:\r\nEND:VCARD\r\n", TextProblem::notCalendar, 0, 0, false},
    {"todo_without_calendar", oneTodo, TextProblem::notCalendar, 0, 0, false},
    {"no_todo", calendar("BEGIN:VEVENT\r\nSUMMARY:a\r\nEND:VEVENT\r\n"), TextProblem::noTodo, 0, 0,
     true},
    {"dirty_no_todo", calendar("X:\r\n"), TextProblem::noTodo, 0, 0, false},
    {"cut_in_todo", "BEGIN:VCALENDAR\r\nVERSION:1.0\r\nBEGIN:VTODO\r\nSUMM", TextProblem::truncated,
     3, 0, false},
    {"cut_after_todo", "BEGIN:VCALENDAR\r\nVERSION:1.0\r\n" + oneTodo, TextProblem::truncated, 1, 0,
     false},
    {"cut_in_second_calendar", calendar(oneTodo) + "BEGIN:VCALENDAR\r\n", TextProblem::truncated, 7,
     0, false},
    {"cut_in_encoded", "BEGIN:VCALENDAR\r\nBEGIN:VTODO\r\nSUMMARY;QP:a=", TextProblem::truncated, 2,
     0, false},
    {"cut_in_base64", "BEGIN:VCALENDAR\r\nBEGIN:VTODO\r\nSUMMARY;BASE64:YW", TextProblem::truncated,
     2, 0, false},
    {"cut_in_vcard", "BEGIN:VCARD\r\nN:a\r\n", TextProblem::truncated, 1, 0, false},
    {"cut_in_alarm", "BEGIN:VCALENDAR\r\nBEGIN:VTODO\r\nBEGIN:VALARM\r\n", TextProblem::truncated,
     3, 0, false},
    {"todo_without_end", calendar("BEGIN:VTODO\r\nSUMMARY:a\r\n"), TextProblem::truncated, 3, 0,
     false},
    {"event_without_end", calendar("BEGIN:VEVENT\r\nSUMMARY:a\r\n" + oneTodo),
     TextProblem::truncated, 3, 0, false},
    {"calendar_without_end", "BEGIN:VCALENDAR\r\n" + oneTodo + calendar(oneTodo),
     TextProblem::truncated, 1, 0, false},
    {"alarm_without_end", calendar(todo("BEGIN:VALARM\r\nDUE:x\r\n") + oneTodo), TextProblem::none,
     0, 2, false},
    {"stray_end", calendar("END:VTODO\r\n" + oneTodo), TextProblem::none, 0, 1, false},
    {"nested_to_the_limit", nested(ulo::nestingLimit), TextProblem::none, 0, 1, false},
    {"nested_too_deep", nested(ulo::nestingLimit + 1), TextProblem::malformed,
     ulo::nestingLimit + 3, 0, false},
};

INSTANTIATE_TEST_SUITE_P(All, VcalExamination, testing::ValuesIn(examinations),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(VcalGuard, OnlyRegularFilesAreReadable) {
  TemporaryDirectory directory;
  const std::string pipe = directory.path() / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const std::string directoryName = directory.path();
  const std::string missing = directory.path() / "missing";
  for (const std::string& path : {pipe, directoryName, missing, "/dev/zero"s, ""s}) {
    EXPECT_EQ(ulo::examineFile(path).problem, TextProblem::unreadable) << path;
    EXPECT_FALSE(GuardedText::fromFile(path, {}).isClean()) << path;
  }
}

TEST(VcalGuard, ReadErrorMakesFileUnreadable) {
  // A regular file, but reading the memory of this process at 0 fails.
  EXPECT_EQ(ulo::examineFile("/proc/self/mem").problem, TextProblem::unreadable);
}

}  // namespace
