// Takes pictures of every screen and dialog.
// usage: screen_pictures DIRECTORY WIDTHxHEIGHT LANGUAGE [POINTS]

#include "camera.h"

#include "LockDialog.h"
#include "RES_ICON_Reader.h"
#include "TASK_UI_DetailView.h"
#include "ZMessageDlg.h"
#include "ZOptionsMenu.h"
#include "ZSoftKey.h"
#include "task_words.h"
#include "ulo/texts.h"

#include <QLineEdit>
#include <QTemporaryDir>

namespace {

ZTASK_ENG_Task sampleTask() {
  ZTASK_ENG_Task task;
  task.setString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY,
                 ulo::text("sample", "Return the books to the library before it closes"));
  task.setString(ZTASK_ENG_Task::TASK_FIELD_NOTE,
                 QString::fromUtf8("The three novels and the atlas.\nKäse und Müsli kaufen 🚲\n"
                                   "给妈妈打电话，周日之前。\n"
                                   "https://example.org/a/very/long/address/without/any/blank/in/"
                                   "it/to/show/how/it/is/wrapped?query=0123456789\n"
                                   "اتصل بالمكتبة قبل الإغلاق\n"
                                   "The last line of a note that is longer than the screen."));
  task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_DUE, QDateTime(QDate(2027, 3, 5), QTime(12, 0)));
  task.setPriority(1);
  task.setStatus(1);
  return task;
}

QValueList<QPixmap> stateIcons() {
  QValueList<QPixmap> icons;
  for (const ulo::ShownAs* shown : ulo::iconOrder)
    icons.append(RES_ICON_Reader::getIcon(QString::fromLatin1(shown->icon), true));
  return icons;
}

void shootDetailView(const Camera& camera) {
  ZTASK_ENG_Task task = sampleTask();
  {
    TASK_UI_DetailView view(nullptr, nullptr, 0);
    QValueList<QPixmap> icons = stateIcons();
    view.loadPixmap(icons);
    view.openView(&task);
    camera.show(view);
    camera.shoot("detail");
    view.setFocus();
    for (int i = 0; i < 4; ++i)
      QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
    camera.shoot("detail-notes");
    view.cstWidget()->click(ZSoftKey::left);
    auto* menu = view.findChild<ZOptionsMenu*>();
    camera.shoot("detail-menu");
    QTest::keyClick(menu, Qt::Key_Down);
    const bool mirrored = QApplication::layoutDirection() == Qt::RightToLeft;
    QTest::keyClick(menu, mirrored ? Qt::Key_Left : Qt::Key_Right);
    camera.shoot("detail-submenu");
    menu->hide();
  }
  auto* alone = new TASK_UI_DetailView(nullptr, nullptr, 0);
  task.setStatus(0);
  task.setPriority(9);
  task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_DUE, ZTASK_ENG_Task::noDate());
  alone->openStandaloneView(task);
  camera.show(*alone);
  camera.shoot("detail-standalone");
  alone->close();
}

void shootMessages(const Camera& camera) {
  QWidget behind;
  camera.show(behind);
  ZMessageDlg saved(
      ulo::text("TXT_RID_HEADER_SAVED_TO_TASK_LIST", "Saved to Task List"),
      ulo::text("FMT_RID_INSTRUCTIONALTXT_1_SAVED_TO_TASK_LIST", "%1 saved to Task List")
          .arg(sampleTask().getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY)),
      ZMessageDlg::message);
  saved.setTitleIcon(RES_ICON_Reader::getIcon(QStringLiteral("save_pop.gif"), true));
  camera.shootDialog(saved, "saved");

  ZMessageDlg full(ulo::text("TXT_RID_HEADER_MEMORY_FULL", "Memory Full"),
                   ulo::text("TXT_RID_INSTRUCTIONALTXT_TASK_CANNOT_BE_CREATED_PHONE_MEMORY_IS_"
                             "FULL_PLEASE_DELETE_SOME_FILES_TO_CREATE_SPACE_IN_MEMORY",
                             "Task cannot be created because phone memory is full. Please delete "
                             "some files to create space in memory."),
                   ZMessageDlg::message);
  full.setTitleIcon(RES_ICON_Reader::getIcon(QStringLiteral("alert_pop.gif"), true));
  camera.shootDialog(full, "memory-full");
}

void shootLock(const Camera& camera) {
  const QTemporaryDir directory;
  ulo::AppLock lock(directory.path().toStdString());
  QString code = QStringLiteral("4711");
  static_cast<void>(lock.set(ulo::LockCode(code)));
  QWidget behind;
  camera.show(behind);
  const auto shootAfter = [&](int wrongCodes, const char* name) {
    LockDialog dialog(lock);
    auto* line = dialog.findChild<QLineEdit*>();
    for (int i = 0; i < wrongCodes; ++i) {
      line->setText(QStringLiteral("0815"));
      dialog.accept();
    }
    line->setText(wrongCodes == 0 ? QStringLiteral("0815") : QString());
    camera.shootDialog(dialog, name);
  };
  shootAfter(0, "lock");
  shootAfter(1, "lock-wrong");
  shootAfter(ulo::AppLock::freeAttempts, "lock-waiting");
}

}  // namespace

int main(int count, char** arguments) {
  return takePictures(count, arguments, {shootDetailView, shootMessages, shootLock});
}
