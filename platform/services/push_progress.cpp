#include "push_progress.h"

#include "RES_ICON_Reader.h"
#include "ZSoftKey.h"
#include "ZWrappedText.h"
#include "foreign_text.h"
#include "ulo/look.h"
#include "ulo/texts.h"

#include <QLocale>
#include <QProgressBar>
#include <QVBoxLayout>

#include <algorithm>

namespace ulo {

namespace {

// Maximum length of a name in a dialog, in characters.
constexpr qsizetype nameLimit = 60;
constexpr int wholeBar = 1000;

QString dataSize(quint64 bytes) {
  return QLocale().formattedDataSize(static_cast<qint64>(bytes), 1, QLocale::DataSizeSIFormat);
}

}  // namespace

PushProgress::PushProgress(const QString& object, const QString& device, QWidget* parent)
    : ZPopup(text("TXT_RID_HEADER_SEND_VIA_BLUETOOTH", "Send via Bluetooth"), parent),
      bar_(new QProgressBar), phase_(new ZWrappedText(QString())) {
  setTitleIcon(RES_ICON_Reader::getIcon(QStringLiteral("bluetooth_pop.gif"), true));
  setKeys(QString(), text("TXT_RID_SOFTKEY_CANCEL", "Cancel"));
  bar_->setTextVisible(false);
  phase_->setColor(QPalette::PlaceholderText);
  auto* content = new QWidget;
  auto* column = new QVBoxLayout(content);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(gap(this));
  column->addWidget(
      new ZWrappedText(text("FMT_RID_INSTRUCTIONALTXT_SENDING_1_TO_2", "Sending %1 to %2")
                           .arg(oneLine(object, nameLimit), oneLine(device, nameLimit))));
  column->addWidget(bar_);
  column->addWidget(phase_);
  setContent(content);
  showConnecting();
}

void PushProgress::showBusy(const QString& phase) {
  bar_->setRange(0, 0);
  phase_->setText(phase);
}

void PushProgress::showConnecting() {
  showBusy(text("TXT_RID_INSTRUCTIONALTXT_CONNECTING", "Connecting\xe2\x80\xa6"));
}

void PushProgress::showOffering() {
  showBusy(text("TXT_RID_INSTRUCTIONALTXT_WAITING_FOR_OTHER_DEVICE",
                "Waiting for the other device\xe2\x80\xa6"));
}

void PushProgress::showSending(quint64 transferred, quint64 size) {
  if (size == 0) {
    showBusy(dataSize(transferred));
    return;
  }
  const quint64 done = std::min(transferred, size);
  bar_->setRange(0, wholeBar);
  bar_->setValue(
      static_cast<int>(static_cast<double>(done) / static_cast<double>(size) * wholeBar));
  phase_->setText(
      text("FMT_RID_INSTRUCTIONALTXT_1_OF_2", "%1 of %2").arg(dataSize(done), dataSize(size)));
}

void PushProgress::showLeaving() {
  keys()->setKeyEnabled(ZSoftKey::right, false);
}

}  // namespace ulo
