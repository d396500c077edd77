// Tests for the user-visible texts in each language.

#include "ZApplication.h"
#include "gui_test.h"
#include "ulo/texts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDirIterator>
#include <QRegularExpression>
#include <QResource>

namespace {

// Restores English after the test.
class Languages : public testing::Test {
protected:
  ~Languages() override { speak({"en"}); }

  static void speak(const QStringList& languages) { application().setLanguages(languages); }
  static QString back() { return ulo::text("TXT_RID_SOFTKEY_BACK", "Back"); }
};

TEST_F(Languages, AreChosenInOrder) {
  speak({"de"});
  EXPECT_EQ(back(), "Zurück");
  speak({"de-AT"});
  EXPECT_EQ(back(), "Zurück");
  speak({"zh-CN"});
  EXPECT_EQ(back(), "返回");
  speak({"zh-Hans-CN", "zh-CN"});
  EXPECT_EQ(back(), "返回");
  speak({"fr", "de"});
  EXPECT_EQ(back(), "Zurück");
  speak({"en-GB", "de"});
  EXPECT_EQ(back(), "Back");
  speak({"fr"});
  EXPECT_EQ(back(), "Back");
  speak({"C"});
  EXPECT_EQ(back(), "Back");
}

TEST_F(Languages, DetermineDirection) {
  ASSERT_TRUE(QResource::registerResource(QStringLiteral(ULO_HEBREW)));
  speak({"he"});
  EXPECT_EQ(back(), QString::fromUtf8("\u05d7\u05d6\u05e8\u05d4"));
  EXPECT_EQ(QApplication::layoutDirection(), Qt::RightToLeft);
  speak({"en"});
  EXPECT_EQ(QApplication::layoutDirection(), Qt::LeftToRight);
  speak({"he"});
  speak({"de"});
  EXPECT_EQ(QApplication::layoutDirection(), Qt::LeftToRight);
  QResource::unregisterResource(QStringLiteral(ULO_HEBREW));
}

TEST_F(Languages, WithoutTextsDoNotMirrorLayout) {
  for (const QStringList& languages : {QStringList{"ar"}, {"fa", "de"}, {"he", "ar"}}) {
    speak(languages);
    EXPECT_EQ(QApplication::layoutDirection(), Qt::LeftToRight) << languages[0].toStdString();
  }
}

TEST_F(Languages, UnknownTextIsEnglish) {
  speak({"de"});
  EXPECT_EQ(ulo::text("TXT_RID_NOBODY_KNOWS", "K\xC3\xA4se"), "Käse");
}

// Returns every id in the sources with its English default.
QMap<QString, QString> textsOfSources() {
  // "A" "B" is a single literal in C++.
  static const QRegularExpression entry(
      QStringLiteral("\"((?:TXT|FMT)_RID_[A-Z0-9_]*(?:\"\\s*\"[A-Z0-9_]+)*)\",\\s*"
                     "(?=\"([^\"]*(?:\"\\s*\"[^\"]*)*)\")"));
  static const QRegularExpression joint(QStringLiteral("\"\\s*\""));
  QMap<QString, QString> result;
  for (const char* room : {"apps", "platform", "uistyle"}) {
    QDirIterator files(QStringLiteral(ULO_SOURCE_DIR "/%1").arg(QLatin1String(room)), {"*.cpp"},
                       QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
      QFile file(files.next());
      EXPECT_TRUE(file.open(QIODevice::ReadOnly));
      for (const auto& match : entry.globalMatch(QString::fromUtf8(file.readAll()))) {
        const QString id = match.captured(1).remove(joint);
        const QString english = match.captured(2).remove(joint);
        if (english.startsWith(QLatin1String("TXT_RID_")))
          continue;  // two ids for one text: the second matches separately
        EXPECT_EQ(result.value(id, english), english) << id.toStdString() << " has two defaults";
        result[id] = english;
      }
    }
  }
  return result;
}

TEST_F(Languages, EveryTextIsTranslated) {
  QMap<QString, QString> texts = textsOfSources();
  // The first ids of the rows of the detail view, which share the default of the second ones.
  for (const char* id : {"TITLE", "DUE_DATE", "STATUS", "PRIORITY", "NOTES"})
    texts[QStringLiteral("TXT_RID_LABEL_FORMITEM_%1").arg(QLatin1String(id))] = QString();
  ASSERT_GT(texts.size(), 25);
  for (const char* language : {"de", "zh-CN"}) {
    speak({QLatin1String(language)});
    for (auto text = texts.begin(); text != texts.end(); ++text) {
      const QByteArray id = text.key().toLatin1();
      const QString translated = ulo::text(id.constData(), "(none)");
      EXPECT_NE(translated, "(none)") << language << ' ' << text.key().toStdString();
      EXPECT_EQ(translated.count(QLatin1String("%1")), text.value().count(QLatin1String("%1")))
          << language << ' ' << text.key().toStdString();
    }
  }
}

}  // namespace
