#include "device_chooser.h"

#include "RES_ICON_Reader.h"
#include "ZSoftKey.h"
#include "ZWrappedText.h"
#include "ulo/look.h"
#include "ulo/texts.h"

#include <QListWidget>
#include <QPainter>
#include <QScreen>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

#include <algorithm>

namespace ulo {

namespace {

// Number of visible rows, limited to half of the screen.
constexpr int leastRows = 4;
constexpr int mostRows = 8;
constexpr int detailRole = Qt::UserRole;

// Shows the name and below it, in a weaker color, details that tell apart devices with the same
// name, each on one line.
class DeviceRow : public QStyledItemDelegate {
public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    painter->save();
    const bool marked = (option.state & QStyle::State_Selected) != 0;
    painter->fillRect(option.rect,
                      option.palette.color(marked ? QPalette::Highlight : QPalette::Base));
    const int margin = gap(option.widget);
    const int line = option.fontMetrics.height();
    QRect place = option.rect.adjusted(margin, 0, -margin, 0);
    place.setTop(option.rect.top() + (option.rect.height() - 2 * line) / 2);
    place.setHeight(line);
    painter->setFont(option.font);
    painter->setPen(option.palette.color(QPalette::Text));
    drawLine(painter, option, place, index.data(Qt::DisplayRole).toString());
    painter->setPen(option.palette.color(marked ? QPalette::Text : QPalette::PlaceholderText));
    drawLine(painter, option, place.translated(0, line), index.data(detailRole).toString());
    painter->restore();
  }

  [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option,
                               const QModelIndex&) const override {
    return {0, heightOf(option.widget)};
  }

  static int heightOf(const QWidget* widget) {
    return std::max(touchHeight(widget), 2 * widget->fontMetrics().height() + gap(widget));
  }

private:
  static void drawLine(QPainter* painter, const QStyleOptionViewItem& option, const QRect& place,
                       const QString& text) {
    const Qt::Alignment side = QStyle::visualAlignment(option.direction, Qt::AlignLeft);
    painter->drawText(place, static_cast<int>(side) | Qt::TextSingleLine,
                      option.fontMetrics.elidedText(text, Qt::ElideRight, place.width()));
  }
};

// The height is that of its visible rows, whatever the content: rows appear while it is open.
class DeviceList : public QListWidget {
public:
  explicit DeviceList(int screenHeight) : screenHeight_(screenHeight) {}

  [[nodiscard]] QSize sizeHint() const override { return {0, height()}; }
  [[nodiscard]] QSize minimumSizeHint() const override { return {0, height()}; }

private:
  [[nodiscard]] int height() const {
    const int row = DeviceRow::heightOf(this);
    return std::clamp(screenHeight_ / 2 / row, leastRows, mostRows) * row + 2 * frameWidth();
  }

  int screenHeight_;
};

QString detailOf(const BluetoothDevice& device) {
  return device.paired ? text("FMT_RID_STANDARD_1_PAIRED", "%1, paired").arg(device.address)
                       : device.address;
}

}  // namespace

DeviceChooser::DeviceChooser(QWidget* parent)
    : ZPopup(text("TXT_RID_HEADER_SEND_VIA_BLUETOOTH", "Send via Bluetooth"), parent),
      hint_(new ZWrappedText(QString())),
      list_(new DeviceList(parent != nullptr ? parent->window()->height()
                                             : screen()->availableGeometry().height())) {
  setTitleIcon(RES_ICON_Reader::getIcon(QStringLiteral("bluetooth_pop.gif"), true));
  setKeys(text("TXT_RID_SOFTKEY_SEND", "Send"), text("TXT_RID_SOFTKEY_CANCEL", "Cancel"));
  list_->setItemDelegate(new DeviceRow(list_));
  list_->setUniformItemSizes(true);
  makeTouchable(list_);
  list_->setAccessibleName(text("TXT_RID_INSTRUCTIONALTXT_CHOOSE_DEVICE", "Choose a device."));
  auto* content = new QWidget;
  auto* column = new QVBoxLayout(content);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(gap(this));
  column->addWidget(hint_);
  column->addWidget(list_);
  setContent(content);
  connect(list_, &QListWidget::currentRowChanged, this,
          [this](int row) { keys()->setKeyEnabled(ZSoftKey::left, row >= 0); });
  connect(list_, &QListWidget::itemDoubleClicked, this, &DeviceChooser::accept);
  keys()->setKeyEnabled(ZSoftKey::left, false);
  list_->setFocus();
  tell();
}

void DeviceChooser::setDevices(const std::vector<BluetoothDevice>& devices) {
  const QString before = chosen().address;
  devices_ = devices;
  list_->clear();
  for (const BluetoothDevice& device : devices_) {
    auto* row = new QListWidgetItem(device.name, list_);
    row->setData(detailRole, detailOf(device));
    row->setData(Qt::AccessibleDescriptionRole, detailOf(device));
  }
  const auto same = std::find_if(devices_.cbegin(), devices_.cend(),
                                 [&](const auto& device) { return device.address == before; });
  if (!devices_.empty())
    list_->setCurrentRow(same == devices_.cend() ? 0 : static_cast<int>(same - devices_.cbegin()));
  tell();
}

void DeviceChooser::setSearching(bool searching) {
  searching_ = searching;
  tell();
}

void DeviceChooser::tell() {
  if (devices_.empty())
    hint_->setText(searching_
                       ? text("TXT_RID_INSTRUCTIONALTXT_NO_KNOWN_DEVICES_SEARCHING",
                              "No known devices. Searching for devices in reach\xe2\x80\xa6")
                       : text("TXT_RID_INSTRUCTIONALTXT_NO_DEVICES_FOUND", "No devices found."));
  else
    hint_->setText(searching_ ? text("TXT_RID_INSTRUCTIONALTXT_CHOOSE_DEVICE_SEARCHING",
                                     "Choose a device. Searching for more\xe2\x80\xa6")
                              : text("TXT_RID_INSTRUCTIONALTXT_CHOOSE_DEVICE", "Choose a device."));
}

BluetoothDevice DeviceChooser::chosen() const {
  const auto row = static_cast<std::size_t>(list_->currentRow());
  return row < devices_.size() ? devices_[row] : BluetoothDevice();
}

void DeviceChooser::accept() {
  if (!chosen().address.isEmpty())
    ZPopup::accept();
}

}  // namespace ulo
