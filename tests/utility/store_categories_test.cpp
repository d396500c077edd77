// Categories on the real database.

#include "store_test.h"

namespace {

using testing::ElementsAre;

class StoreCategories : public StoreTest {
protected:
  unsigned int addTo(const QString& category) {
    Task added = task("s");
    added.setString(Task::TASK_FIELD_CATEGORY, category);
    return add(added);
  }
  int rename(QString from, QString to) { return store().renameCategory(from, to); }
  int remove(QString name, bool withTasks) { return store().removeCategory(name, withTasks); }
  // QString::fromStdU16String would drop a byte order mark.
  static QString text(const std::u16string& units) {
    return QString(reinterpret_cast<const QChar*>(units.data()),
                   static_cast<qsizetype>(units.size()));
  }
  int uidOf(const std::string& name) {
    return std::stoi(sql("SELECT UID FROM task_table_category WHERE name IS " + name).at(0));
  }
};

TEST_F(StoreCategories, AssignsNewUids) {
  EXPECT_EQ(addCategory("work"), 7U);
  EXPECT_EQ(addCategory("home"), 8U);
  EXPECT_THAT(categories(), ElementsAre("(null)", "none", "meeting", "vacation", "appointment",
                                        "party", "work", "home"));
  EXPECT_THAT(sql("SELECT flag FROM task_table_category WHERE UID > 6"), ElementsAre("0", "0"));
}

TEST_F(StoreCategories, ComparesNamesByteForByte) {
  unsigned int uid = 55;
  for (const char* name : {"meeting", "none", "party"}) {
    QString text(name);
    EXPECT_EQ(store().addCategory(text, uid), TASK_ENG_EXISTS) << name;
  }
  QString null;
  EXPECT_EQ(store().addCategory(null, uid), TASK_ENG_EXISTS);
  EXPECT_EQ(uid, 55U);
  for (const char* name : {"Meeting", "meeting ", "", "会议", "e\xcc\x81", "\xc3\xa9"}) {
    QString text = QString::fromUtf8(name);
    EXPECT_EQ(store().addCategory(text, uid), TASK_ENG_OK) << name;
    EXPECT_EQ(store().addCategory(text, uid), TASK_ENG_EXISTS) << name;
    EXPECT_EQ(categories().back(), name);
  }
}

// Half of a surrogate pair, which has no UTF-8, is kept nevertheless, so that names that differ
// only in it stay different, even from a name with the replacement character.
TEST_F(StoreCategories, KeepsNamesUnitByUnit) {
  const std::u16string names[] = {u"\uFEFFa",
                                  u"a",
                                  u"\uFEFF",
                                  u"\uFEFF\uFEFFa",
                                  u"\xD800",
                                  u"\xD801",
                                  u"\xDC00",
                                  u"\uFFFD",
                                  u"?",
                                  u"a\xDBFF",
                                  u"a\xDBFFz",
                                  u"\xDC00\xD800",
                                  u"\xD83D\xDE00",
                                  u"\xD83D\xDE00\xD83D",
                                  u"\uD7FF\uE000",
                                  u"\xDFFF\uFEFF",
                                  u"\uD000"};
  QValueList<QString> expected;
  EXPECT_EQ(store().getAllCategories(expected), TASK_ENG_OK);
  for (const std::u16string& units : names) {
    const QString name = text(units);
    const unsigned int uid = addCategory(name);
    EXPECT_EQ(addTo(name), uid - 6);
    EXPECT_EQ(get(uid - 6).getString(Task::TASK_FIELD_CATEGORY).toStdU16String(), units);
    expected.append(name);
  }
  close();
  QValueList<QString> found;
  EXPECT_EQ(store().getAllCategories(found), TASK_ENG_OK);
  EXPECT_EQ(std::vector<QString>(found.begin(), found.end()),
            std::vector<QString>(expected.begin(), expected.end()));
  for (const std::u16string& units : names) {
    QString name = text(units);
    QValueList<Task> tasks;
    EXPECT_EQ(store().getTasks(tasks, name), TASK_ENG_OK);
    ASSERT_EQ(tasks.count(), 1U);
    EXPECT_EQ(tasks.at(0).getString(Task::TASK_FIELD_CATEGORY).toStdU16String(), units);
    EXPECT_EQ(remove(name, true), TASK_ENG_OK);
  }
  EXPECT_EQ(categories().size(), 6U);
  EXPECT_EQ(count(), 0);
}

TEST_F(StoreCategories, LogsAddingNullName) {
  store();
  sql("DELETE FROM task_table_category WHERE name IS NULL");
  QString null;
  unsigned int uid = 0;
  const std::string log = logOf([&] { EXPECT_EQ(store().addCategory(null, uid), TASK_ENG_OK); });
  EXPECT_EQ(log, line("The category  is not exist!") + line("the category is null"));
  EXPECT_EQ(uid, 7U);
}

TEST_F(StoreCategories, GetAllCategoriesAppendsAndKeepsNull) {
  QValueList<QString> names;
  names.append("before");
  EXPECT_EQ(store().getAllCategories(names), TASK_ENG_OK);
  ASSERT_EQ(names.count(), 7U);
  EXPECT_EQ(names.at(0), QString("before"));
  EXPECT_TRUE(names.at(1).isNull());
  EXPECT_EQ(names.at(2), QString("none"));
}

TEST_F(StoreCategories, GetAllCategoriesReturnsNothingFromEmptyTable) {
  store();
  sql("DELETE FROM task_table_category");
  QValueList<QString> names;
  EXPECT_EQ(logOf([&] { EXPECT_EQ(store().getAllCategories(names), TASK_ENG_OK); }),
            line("The category table is empty!"));
  EXPECT_TRUE(names.isEmpty());
}

TEST_F(StoreCategories, RenameConvertsBothNamesToLowerCase) {
  const unsigned int uid = addTo("party");
  EXPECT_EQ(rename("PARTY", "Feast"), TASK_ENG_OK);
  EXPECT_EQ(get(uid).getString(Task::TASK_FIELD_CATEGORY), QString("feast"));
  EXPECT_EQ(rename("feast", "Feast"), TASK_ENG_OK);
  EXPECT_THAT(categories(),
              ElementsAre("(null)", "none", "meeting", "vacation", "appointment", "feast"));
  // A name stored with a capital letter does not match itself.
  addCategory("Work");
  EXPECT_EQ(rename("Work", "job"), TASK_ENG_OK);
  EXPECT_EQ(categories().back(), "Work");
  EXPECT_EQ(rename("unheard of", "job"), TASK_ENG_OK);
  EXPECT_EQ(categories().back(), "Work");
  EXPECT_EQ(rename(QString::fromUtf8("VACATION"), QString::fromUtf8("ÄÖÜ")), TASK_ENG_OK);
  EXPECT_EQ(categories().at(3), "äöü");
}

TEST_F(StoreCategories, RenameChangesEveryRowWithTheName) {
  EXPECT_EQ(rename("party", "meeting"), TASK_ENG_OK);
  EXPECT_EQ(rename("meeting", "both"), TASK_ENG_OK);
  EXPECT_THAT(categories(),
              ElementsAre("(null)", "none", "both", "vacation", "appointment", "both"));
}

TEST_F(StoreCategories, RenameFromNullMatchesNothingAndToNullStoresNull) {
  // Nothing is equal to null.
  EXPECT_EQ(rename(QString(), "named"), TASK_ENG_OK);
  EXPECT_EQ(categories().front(), "(null)");
  EXPECT_EQ(rename("party", QString()), TASK_ENG_OK);
  EXPECT_EQ(categories().back(), "(null)");
}

TEST_F(StoreCategories, RemoveKeepsTasksUnlessAsked) {
  const unsigned int uid = addTo("vacation");
  EXPECT_EQ(remove("vacation", false), TASK_ENG_OK);
  EXPECT_THAT(categories(), ElementsAre("(null)", "none", "meeting", "appointment", "party"));
  EXPECT_EQ(get(uid).getString(Task::TASK_FIELD_CATEGORY), QString("None"));

  const unsigned int gone = addTo("meeting");
  const unsigned int alsoGone = addTo("meeting");
  EXPECT_EQ(remove("meeting", true), TASK_ENG_OK);
  EXPECT_EQ(code(gone), TASK_ENG_NOT_FOUND);
  EXPECT_EQ(code(alsoGone), TASK_ENG_NOT_FOUND);
  EXPECT_THAT(uids(), ElementsAre(uid));
  EXPECT_THAT(categories(), ElementsAre("(null)", "none", "appointment", "party"));
}

TEST_F(StoreCategories, RemoveIgnoresUnknownName) {
  addTo("meeting");
  const auto before = categories();
  EXPECT_EQ(remove("unheard of", false), TASK_ENG_OK);
  EXPECT_EQ(logOf([&] { EXPECT_EQ(remove("unheard of", true), TASK_ENG_OK); }),
            line("The category unheard of is not exist!") + line("No such category!!"));
  EXPECT_EQ(remove("Meeting", true), TASK_ENG_OK);
  EXPECT_EQ(categories(), before);
  EXPECT_EQ(count(), 1);
}

TEST_F(StoreCategories, RemoveLogsThatCategoryHasNoTasks) {
  EXPECT_THAT(logOf([&] { EXPECT_EQ(remove("party", true), TASK_ENG_OK); }),
              HasLine("No task with such category!"));
  EXPECT_EQ(categories().back(), "appointment");
}

TEST_F(StoreCategories, RemovesFirstOfSeveralCategories) {
  EXPECT_EQ(rename("party", "meeting"), TASK_ENG_OK);
  EXPECT_EQ(remove("meeting", false), TASK_ENG_OK);
  EXPECT_THAT(sql("SELECT UID FROM task_table_category WHERE name = 'meeting'"), ElementsAre("6"));
  // The null category is removed like any other.
  EXPECT_EQ(remove(QString(), false), TASK_ENG_OK);
  EXPECT_EQ(categories().front(), "none");
}

TEST_F(StoreCategories, RemovesAllTasksOfCategory) {
  std::vector<unsigned int> others;
  for (int i = 0; i < 40; ++i) {
    const unsigned int uid = addTo(i % 2 == 0 ? QString("meeting") : QString());
    if (i % 2 != 0)
      others.push_back(uid);
  }
  EXPECT_EQ(store().removeTasksWithCategoryId(uidOf("'meeting'")), TASK_ENG_OK);
  EXPECT_EQ(uids(), others);
  EXPECT_EQ(
      logOf([&] { EXPECT_EQ(store().removeTasksWithCategoryId(uidOf("'meeting'")), TASK_ENG_OK); }),
      line("No task with such category!"));
  EXPECT_EQ(store().removeTasksWithCategoryId(-1), TASK_ENG_OK);
  EXPECT_EQ(uids(), others);
  EXPECT_EQ(store().removeTasksWithCategoryId(uidOf("NULL")), TASK_ENG_OK);
  EXPECT_EQ(count(), 0);
}

}  // namespace
