// The part of a text that fits into a limit.

#include "form/text_fit.h"

#include <gtest/gtest.h>

namespace {

// The text after inserting `inserted` at `place` of `before`, limited to ten characters.
QString fitted(const QString& before, qsizetype place, const QString& inserted) {
  QString text = before;
  text.insert(place, inserted);
  const tasks::Span surplus = tasks::surplusOf(before, text, place + inserted.size(), 10);
  return text.remove(surplus.from, surplus.to - surplus.from);
}

TEST(TextFit, RemovesEndOfInsertion) {
  EXPECT_EQ(fitted("12345678", 0, "a"), "a12345678");
  EXPECT_EQ(fitted("12345678", 3, "ab"), "123ab45678");
  EXPECT_EQ(fitted("12345678", 3, "abc"), "123ab45678");
  EXPECT_EQ(fitted("1234567890", 3, "a"), "1234567890");
  EXPECT_EQ(fitted("aaaaaaaaaa", 3, "aa"), "aaaaaaaaaa");
  EXPECT_EQ(fitted("", 0, "12345678901"), "1234567890");
}

TEST(TextFit, KeepsWholeLetters) {
  const QString pair = QString::fromUcs4(U"\U0001F6B2");
  EXPECT_EQ(fitted("12345678", 8, pair), "12345678" + pair);
  EXPECT_EQ(fitted("123456789", 9, pair), "123456789");
  EXPECT_EQ(fitted("12345678", 3, "a" + pair), "123a45678");
  EXPECT_EQ(fitted("123456789", 9, QStringLiteral("e\u0301")), "123456789");
  EXPECT_EQ(fitted("1234567890", 10, QStringLiteral("\u0301")), "1234567890");
}

TEST(TextFit, TruncatesTextThatWasTooLong) {
  const tasks::Span surplus = tasks::surplusOf("12345678901234", "a12345678901234", 1, 10);
  EXPECT_EQ(surplus.from, 10);
  EXPECT_EQ(surplus.to, 15);
}

}  // namespace
