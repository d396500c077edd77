// Takes pictures of the Tasks application, with a new store in $ULO_DATA_DIR, which is deleted
// first.
// usage: tasks_pictures DIRECTORY WIDTHxHEIGHT LANGUAGE [POINTS]

#include "camera.h"

#include "ZKbMainWidget.h"
#include "ZOptionsMenu.h"
#include "ZSoftKey.h"
#include "ZTASK_ENG_Model.h"
#include "list/task_list_view.h"
#include "menu_items.h"
#include "ulo/log_sink.h"
#include "window/task_window.h"

#include <QClipboard>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSettings>

#include <functional>

namespace {

using Task = ZTASK_ENG_Task;

struct Sample {
  const char* summary;
  int days;  // from today to the due day; noDay for none
  int priority;
  int status;
  const char* category;
};
constexpr int noDay = 9999;
constexpr Sample samples[] = {
    {"Return the books to the library before it closes", -1, 1, 1, "appointment"},
    {"Buy milk", 0, 5, 0, ""},
    {"Call the bank", 1, 1, 1, "meeting"},
    {"Käse und Müsli kaufen", 3, 9, 1, "Einkauf"},
    {"给妈妈打电话，周日之前", 5, 5, 1, "party"},
    {"اتصل بالمكتبة قبل الإغلاق", 8, 1, 1, ""},
    {"Write the report on the third quarter", 20, 5, 1, "meeting"},
    {"Renew the passport", 90, 5, 1, ""},
    {"Water the plants", noDay, 5, 1, "Garden"},
    {"Learn the second song", noDay, 9, 0, ""},
};

void addTask(ZTASK_ENG_Model& store, const QString& summary, const Sample& sample,
             const QString& note = {}) {
  Task task;
  task.setString(Task::TASK_FIELD_SUMMARY, summary);
  task.setString(Task::TASK_FIELD_NOTE, note);
  task.setPriority(sample.priority);
  task.setStatus(sample.status);
  if (*sample.category != '\0')
    task.setString(Task::TASK_FIELD_CATEGORY, QString::fromUtf8(sample.category));
  if (sample.days != noDay)
    task.setDateTime(Task::TASK_FIELD_DUE, QDate::currentDate().addDays(sample.days).startOfDay());
  if (store.addTask(task) != TASK_ENG_OK)
    static_cast<void>(std::fprintf(stderr, "cannot store a sample task\n"));
}

void fill(ZTASK_ENG_Model& store) {
  for (const Sample& sample : samples)
    addTask(store, QString::fromUtf8(sample.summary), sample);
}

// Adds tasks with hostile texts.
void fillHostile(ZTASK_ENG_Model& store) {
  constexpr Sample plain{"", -3, 1, 1, "a category with a name that is longer than any line"};
  constexpr Sample bare{"", noDay, 5, 1, ""};
  const QString wide(Task::summaryLimit, QChar(0x4E00));
  addTask(store, wide, plain, QString(Task::noteLimit, QChar(0x9F98)));
  addTask(store, QString(Task::summaryLimit, u'W'), plain);
  addTask(store, QStringLiteral("line\nline\ttab\u0007bell\u001B[31mred\u0000zero"), plain);
  addTask(store, QStringLiteral("\u202Eturned \u2066round\u2069 \u200Fmarks"), plain);
  addTask(store, QString::fromUtf8("اتصل ").repeated(80), plain);
  addTask(store, QStringLiteral("a\u0301\u0301\u0301\u0301\u0301").repeated(60), bare);
  addTask(store, QString(), bare);
  addTask(store, QStringLiteral("<b>bold</b> &amp; <img src=x>"), plain);
  addTask(store, QString(QChar(0xD83D)) + QStringLiteral(" half a pair"), bare);
}

// The application window, operated with keys like a user does.
class Phone {
public:
  Phone(const Camera& camera, ZTASK_ENG_Model& store) : camera_(camera), window_(store) {
    camera.show(window_);
  }

  void press(std::initializer_list<int> keys) {
    for (const int key : keys) {
      QWidget* target = QApplication::activePopupWidget();
      if (target == nullptr)
        target = QApplication::focusWidget();
      if (target != nullptr)
        QTest::keyClick(target, static_cast<Qt::Key>(key));
      QTest::qWait(20);
    }
  }
  void type(const QString& text) { QTest::keyClicks(QApplication::focusWidget(), text); }
  void shoot(const char* name) { camera_.shoot(name); }
  // Takes a picture of the dialog that the action opens, then closes it.
  void shootDialog(const char* name, const std::function<void()>& action) {
    QTimer::singleShot(400, &window_, [this, name] {
      shoot(name);
      if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget()))
        dialog->reject();
    });
    action();
  }
  ZOptionsMenu* menu() {
    return static_cast<ZKbMainWidget*>(window_.currentWidget())->findChild<ZOptionsMenu*>();
  }
  void take(int item) {
    menu()->item(item)->trigger();
    QTest::qWait(20);
  }
  tasks::TaskWindow& window() { return window_; }

private:
  const Camera& camera_;
  tasks::TaskWindow window_;
};

void shootList(Phone& phone) {
  phone.shoot("list");
  phone.press({Qt::Key_Down, Qt::Key_F1});
  phone.shoot("list-menu");
  phone.press({Qt::Key_Return});
  phone.shoot("list-menu-view");
  phone.press({Qt::Key_F3, Qt::Key_F3});
  phone.type(QStringLiteral("the"));
  phone.shoot("list-search");
  phone.type(QStringLiteral("xyz"));
  phone.shoot("list-no-match");
  phone.press({Qt::Key_Escape});
  phone.take(ulo::listMenu::selectMultiple);
  phone.press({Qt::Key_Space, Qt::Key_Down, Qt::Key_Space});
  phone.shoot("list-choosing");
  phone.press({Qt::Key_F2});
  phone.shoot("list-undo");
  phone.take(ulo::listMenu::sortByPriority);
  phone.shoot("list-by-priority");
  phone.take(ulo::listMenu::sortByDue);
}

void shootForm(Phone& phone) {
  phone.press({Qt::Key_Home, Qt::Key_Return});
  phone.shoot("detail-in-window");
  phone.take(ulo::detailMenu::edit);
  phone.shoot("form-edit");
  auto* form = phone.window().currentWidget();
  const QList<QPushButton*> dates = form->findChildren<QPushButton*>();
  phone.shootDialog("form-due-date", [&] { dates.value(0)->click(); });
  phone.shootDialog("form-alarm", [&] { dates.value(1)->click(); });
  auto* category = form->findChildren<QComboBox*>().last();
  category->setFocus();
  category->showPopup();
  phone.shoot("form-categories");
  category->hidePopup();
  // Without a window manager, the focus is not restored automatically.
  phone.window().activateWindow();
  static_cast<void>(QTest::qWaitForWindowActive(&phone.window()));
  auto* note = form->findChild<QPlainTextEdit*>();
  note->setFocus();
  form->findChild<QScrollArea*>()->ensureWidgetVisible(note);
  QApplication::clipboard()->setText(QStringLiteral("Take the atlas back too. ").repeated(157));
  note->paste();
  phone.shoot("form-notes");
  phone.shootDialog("form-cancel", [&] { phone.press({Qt::Key_Escape}); });
}

void shootEmpty(const Camera& camera, ZTASK_ENG_Model& store) {
  Phone phone(camera, store);
  phone.shoot("list-empty");
  phone.press({Qt::Key_F2});
  phone.shoot("form-new");
}

void shootHostile(const Camera& camera, ZTASK_ENG_Model& store) {
  fillHostile(store);
  Phone phone(camera, store);
  phone.shoot("hostile-list");
  phone.press({Qt::Key_Down, Qt::Key_Return});
  phone.shoot("hostile-detail");
  phone.take(ulo::detailMenu::edit);
  phone.shoot("hostile-form");
  phone.press({Qt::Key_F3, Qt::Key_F3});
  phone.take(ulo::listMenu::selectMultiple);
  phone.take(ulo::listMenu::selectAll);
  phone.shoot("hostile-choosing");
}

// Deletes the store in $ULO_DATA_DIR.
void removeStore() {
  QDir directory(QFile::decodeName(qgetenv("ULO_DATA_DIR")));
  for (const QString& file : directory.entryList({QStringLiteral("*.db*")}, QDir::Files))
    directory.remove(file);
}

void shootApplication(const Camera& camera) {
  QSettings::setPath(QSettings::IniFormat, QSettings::UserScope,
                     QFile::decodeName(qgetenv("ULO_DATA_DIR")));
  removeStore();
  ZTASK_ENG_Model store;
  shootEmpty(camera, store);
  fill(store);
  {
    Phone phone(camera, store);
    shootList(phone);
    shootForm(phone);
  }
  QValueList<unsigned int> all;
  store.getAllIDs(all);
  store.removeTasks(all);
  shootHostile(camera, store);
}

}  // namespace

int main(int count, char** arguments) {
  ulo::openLogSink("tasks_pictures");
  if (qgetenv("ULO_DATA_DIR").isEmpty()) {
    static_cast<void>(std::fprintf(stderr, "ULO_DATA_DIR must name a directory\n"));
    return 2;
  }
  return takePictures(count, arguments, {shootApplication});
}
