// The log texts in this file are contracts: see docs/compatibility.md.
#include "TASK_UI_DetailView.h"

#include "QAccel.h"
#include "RES_ICON_Reader.h"
#include "SHARE_Tool.h"
#include "TASK_ENG_SyncML.h"
#include "UTIL_DateTime.h"
#include "UTIL_TimeConversion.h"
#include "ZApplication.h"
#include "ZDetailView.h"
#include "ZOptionsMenu.h"
#include "ZSoftKey.h"
#include "ZTASK_ENG_Model.h"
#include "ZVtodoParser.h"
#include "clock.h"
#include "lock_check.h"
#include "menu_items.h"
#include "message_composer.h"
#include "module_log.h"
#include "task_words.h"
#include "tasksMenu.h"
#include "ulo/texts.h"

#include <QFile>
#include <QPointer>
#include <QUuid>

#include <algorithm>
#include <dlfcn.h>

namespace {

// A text by its id, with its English default.
struct Text {
  const char* id;
  const char* english;

  [[nodiscard]] QString get() const { return ulo::text(id, english); }
};

// The label of a row, for a standalone screen and for a screen of the task list.
struct Label {
  const char* standaloneId;
  const char* id;
  const char* english;

  [[nodiscard]] QString get(bool standalone) const {
    return ulo::text(standalone ? standaloneId : id, english);
  }
};
constexpr Label titleLabel{"TXT_RID_LABEL_FORMITEM_TITLE", "TXT_RID_EMPHASIS_TITLE", "Title:"};
constexpr Label dueLabel{"TXT_RID_LABEL_FORMITEM_DUE_DATE", "TXT_RID_EMPHASIS_DUE_DATE",
                         "Due Date:"};
constexpr Label statusLabel{"TXT_RID_LABEL_FORMITEM_STATUS", "TXT_RID_EMPHASIS_STATUS", "Status:"};
constexpr Label priorityLabel{"TXT_RID_LABEL_FORMITEM_PRIORITY", "TXT_RID_EMPHASIS_PRIORITY",
                              "Priority:"};
constexpr Label notesLabel{"TXT_RID_LABEL_FORMITEM_NOTES", "TXT_RID_EMPHASIS_NOTE", "Notes:"};
constexpr Text noDueDate{"TXT_RID_STANDARD_NO_DUE_DATE", "No Due Date"};

constexpr int labelColumn = 72;  // pixels on the narrow screen
constexpr int backKey = 0x1032;  // F3

// Returns the index of an icon in icons_.
int iconPlace(const ulo::ShownAs& shown) {
  const auto* const found = std::find(std::begin(ulo::iconOrder), std::end(ulo::iconOrder), &shown);
  return static_cast<int>(found - std::begin(ulo::iconOrder));
}

// Indexes in menuItems_.
enum KeptItem { keptEdit, keptMessage, keptBluetooth, notKept };
struct MenuItem {
  int id;
  const char* slot;  // null for a heading
  Text text;
  KeptItem kept;
};

constexpr int nameLength = 20;  // characters of the summary in a file name

void traceEntry(const char* function) {
  moduleLog(logTrace, "Entering function %s\n", function);
}

void traceExit(const char* function) {
  moduleLog(logTrace, "Exiting function %s\n", function);
}

}  // namespace

int appLockCheck() {
  using Check = int (*)(const char*, int);
  constexpr int mode = 1;
  void* library = dlopen("libulosecuritysetup.so", RTLD_LAZY);
  if (library == nullptr) {
    ULO_LOG_ERROR("get dllHandle failed!\n");
    return 0;
  }
  ULO_LOG_ERROR("get dllHandle success!\n");
  const auto check =
      reinterpret_cast<Check>(dlsym(library, "SETUP_SECURITY_Util_appLockCheck_modelUI"));
  if (check == nullptr) {
    // The library stays open.
    ULO_LOG_ERROR(" SSU_appLockCheck_modelUI failed!\n");
    return 0;
  }
  const QByteArray application =
      QUuid(QString::fromLatin1(ZTASK_ENG_Model::identifier)).toString().toLatin1();
  const bool granted = check(application.constData(), mode) != 0;
  if (granted)
    ULO_LOG_ERROR("verify successed!\n");
  else
    ULO_LOG_ERROR("verify failed!\n");
  dlclose(library);
  return granted ? 1 : 0;
}

TASK_UI_DetailView::TASK_UI_DetailView(QWidget* parent, const char* name, unsigned int flags)
    : TASK_UI_View(parent, name, flags) {
  ulo::connectReturnToIdle(this, SLOT(close()));
}

TASK_UI_DetailView::~TASK_UI_DetailView() = default;

void TASK_UI_DetailView::loadPixmap(QValueList<QPixmap>& icons) {
  icons_ = icons;
}

QPixmap TASK_UI_DetailView::icon(int index) const {
  const auto place = static_cast<uint>(index);
  return place < icons_.count() ? icons_.at(place) : QPixmap();
}

void TASK_UI_DetailView::openView(ZTASK_ENG_Task* task) {
  task_ = std::make_unique<ZTASK_ENG_Task>(*task);
  setAppTitle(task_->getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY));
  addRows();
  setFocusProxy(rows_);
  addKeys();
}

void TASK_UI_DetailView::openStandaloneView(ZTASK_ENG_Task& task) {
  standalone_ = true;
  setAttribute(Qt::WA_DeleteOnClose);
  // Also if its close event is ignored.
  ulo::connectReturnToIdle(this, SLOT(deleteLater()));
  icons_.clear();
  for (const ulo::ShownAs* shown : ulo::iconOrder)
    icons_.append(RES_ICON_Reader::getIcon(QString::fromLatin1(shown->icon), true));
  openView(&task);
}

void TASK_UI_DetailView::addRows() {
  rows_ = new ZDetailView(this, nullptr, labelColumn);
  setContentWidget(rows_);
  const auto addText = [this](const Label& label, const QString& text) {
    auto* row = new ZDetailItem(ZDetailItem::text, label.get(standalone_));
    row->appendTextIconRow(text);
    rows_->addItem(row);
  };
  const auto addWord = [this](const Label& label, const ulo::ShownAs& shown) {
    auto* row = new ZDetailItem(ZDetailItem::textWithIcon, label.get(standalone_));
    row->appendTextIconRow(ulo::text(shown.textId, shown.english), icon(iconPlace(shown)), true);
    rows_->addItem(row);
  };

  const QDateTime due = task_->getDateTime(ZTASK_ENG_Task::TASK_FIELD_DUE);
  // Unlike ulo::hasDate: an invalid date, which only a caller can set, is shown as an empty text.
  const bool hasDue = due != UTIL_TimeConversion::fromUTC(ZTASK_ENG_Task::noDateSeconds);
  addText(titleLabel, task_->getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY));
  addText(dueLabel,
          hasDue ? UTIL_DateTime::dateToString(due, UTIL_DateTime::dateOnly) : noDueDate.get());
  addWord(statusLabel, ulo::shownState(ulo::isCompleted(*task_)));
  addWord(priorityLabel, ulo::entryOf(ulo::priorityOf(*task_)).shown);
  addText(notesLabel, task_->getString(ZTASK_ENG_Task::TASK_FIELD_NOTE));
}

void TASK_UI_DetailView::addKeys() {
  // One accelerator, however often the screen is filled.
  if (findChild<QAccel*>(QString(), Qt::FindDirectChildrenOnly) == nullptr) {
    auto* accelerator = new QAccel(this);
    accelerator->insertItem(backKey);
    connect(accelerator, SIGNAL(activated(int)), this, SLOT(slotBack()));
  }
  auto* keys = new ZSoftKey(QStringLiteral("CST_2"), this);
  keys->setText(ZSoftKey::right, ulo::text("TXT_RID_SOFTKEY_BACK", "Back"));
  keys->setClickedSlot(ZSoftKey::right, this, SLOT(slotBack()));
  setCSTWidget(keys);
  if (!standalone_)
    addMenu(*keys);
}

void TASK_UI_DetailView::addMenu(ZSoftKey& keys) {
  const MenuItem known[] = {
      {ulo::detailMenu::edit, SLOT(slotTaskEditView()), {"TXT_RID_OPTION_EDIT", "Edit"}, keptEdit},
      {ulo::detailMenu::share, nullptr, {"TXT_RID_OPTION_SHARE_VIA", "Share via"}, notKept},
      {ulo::detailMenu::bluetooth,
       SLOT(sendToBluetooth()),
       {"TXT_RID_OPTION_BLUETOOTH", "Bluetooth"},
       keptBluetooth},
      {ulo::detailMenu::message,
       SLOT(sendToMessage()),
       {"TXT_RID_OPTION_MESSAGE", "Message"},
       keptMessage},
      {ulo::detailMenu::remove,
       SLOT(slotDeleteTask()),
       {"TXT_RID_OPTION_DELETE", "Delete"},
       notKept},
  };
  auto* menu = new ZOptionsMenu(&keys, nullptr, 0, ZOptionsMenu::screenClass,
                                std::make_unique<tasksMenu>(), QStringLiteral("detailedView"));
  for (const int id : menu->getAllItemIds()) {
    const auto* const item = std::find_if(std::begin(known), std::end(known),
                                          [id](const MenuItem& entry) { return entry.id == id; });
    if (item == std::end(known)) {
      ULO_LOG_ERROR("shouldn't come here! check the ini file");
      continue;
    }
    if (item->slot != nullptr)
      menu->connectItem(id, this, item->slot);
    menu->changeItem(id, item->text.get());
    if (item->kept != notKept)
      menuItems_[item->kept] = id;
  }
  keys.setText(ZSoftKey::left, ulo::text("TXT_RID_SOFTKEY_OPTIONS", "Options"));
  keys.setOptMenu(ZSoftKey::left, menu);
}

void TASK_UI_DetailView::slotBack() {
  traceEntry("slotBack");
  if (standalone_) {
    const QPointer<TASK_UI_DetailView> self(this);
    close();
    if (!self.isNull())
      deleteLater();
  } else {
    Q_EMIT changeView(TASK_DETAIL_VIEW, TASK_LIST_VIEW, nullptr);
    Q_EMIT disposeView(TASK_DETAIL_VIEW);
  }
  traceExit("slotBack");
}

void TASK_UI_DetailView::slotTaskEditView() {
  traceEntry("slotTaskEditView");
  Q_EMIT changeView(TASK_DETAIL_VIEW, TASK_FORM_VIEW, task_.get());
  Q_EMIT disposeView(TASK_DETAIL_VIEW);
  traceExit("slotTaskEditView");
}

void TASK_UI_DetailView::slotDeleteTask() {
  traceEntry("slotDeleteTask");
  if (engine()->removeTask(task_->getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID)) != TASK_ENG_OK)
    ULO_LOG_ERROR("remove task error!");
  Q_EMIT changeView(TASK_DETAIL_VIEW, TASK_LIST_VIEW, nullptr);
  Q_EMIT disposeView(TASK_DETAIL_VIEW);
  traceExit("slotDeleteTask");
}

void TASK_UI_DetailView::attachmentPath(QString& path) const {
  const QDateTime now = engineNow();
  const QDate date = now.date();
  const QTime time = now.time();
  const QString stamp = QString::asprintf("%4d%02d%02d-%02d%02d%02d", date.year(), date.month(),
                                          date.day(), time.hour(), time.minute(), time.second());
  const QString summary = task_->getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY);
  path = QFile::decodeName(qgetenv("ULO_LOCAL_APP_WRITE_PATH")) + u'/';
  if (!summary.isEmpty())
    path += summary.left(nameLength) + u'-';
  path += stamp + QStringLiteral(".vcs");
}

void TASK_UI_DetailView::sendToMessage() {
  traceEntry("sendToMessage");
  QString path;
  attachmentPath(path);
  ZVtodoParser parser;
  parser.writeVtodo(path, task_.get());
  if (!QFile::exists(path)) {
    ULO_LOG_ERROR("attached file %s isnot exist", path.toUtf8().constData());
    return;
  }
  ulo::composeMessage(path);
  traceExit("sendToMessage");
}

void TASK_UI_DetailView::sendToBluetooth() {
  traceEntry("sendToBluetooth");
  SHARE_Tool::OBJECT_INFO info;
  const QString summary = task_->getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY);
  info.name = summary + QStringLiteral(".vcs");
  info.mimeType = QStringLiteral("text/x-vCalendar");
  info.description = summary;
  std::string text;
  TASK_ENG_SyncML adaptor;
  if (const int code = adaptor.getEvent(text, task_->getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID));
      code != TASK_SYNCML_OK) {
    ULO_LOG_ERROR("the task can't be read, ret = %d; nothing is sent", code);
    traceExit("sendToBluetooth");
    return;
  }
  QArray<char> data;
  data.duplicate(text.data(), static_cast<uint>(text.size()));
  if (!SHARE_Tool::shareByBt(info, data))
    ULO_LOG_ERROR("shareByBT return false!");
  traceExit("sendToBluetooth");
}
