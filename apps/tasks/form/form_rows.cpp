#include "form/form_rows.h"

#include "ZWrappedText.h"
#include "field_look.h"
#include "ulo/look.h"

#include <QApplication>
#include <QBoxLayout>

#include <algorithm>

namespace tasks {

namespace {

// In pixels at the narrow screen's font size: the width from which on labels are beside their
// fields, and the width of their column.
constexpr int wideScreen = 400;
constexpr int labelColumn = 96;

}  // namespace

class FormRow : public QWidget {
public:
  FormRow(const QString& label, QWidget* field, bool grows)
      : line_(new QBoxLayout(QBoxLayout::TopToBottom, this)), label_(new ZWrappedText(label, this)),
        side_(grows ? Qt::AlignTop : Qt::AlignVCenter) {
    const int gap = ulo::gap(this);
    line_->setContentsMargins(2 * gap, gap, 2 * gap, gap);
    line_->setSpacing(gap / 2);
    label_->setColor(QPalette::PlaceholderText);
    line_->addWidget(label_);
    line_->addWidget(field, 1);
  }

  void setWide(bool wide) {
    line_->setDirection(wide ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    const int width = std::max(ulo::scaled(this, labelColumn), label_->widthOnOneLine() + 1);
    label_->setMinimumWidth(wide ? width : 0);
    label_->setMaximumWidth(wide ? width : QWIDGETSIZE_MAX);
    line_->setAlignment(label_, wide ? side_ : Qt::Alignment());
  }

private:
  QBoxLayout* line_;
  ZWrappedText* label_;
  Qt::Alignment side_;  // of a label beside its field
};

FormRows::FormRows(QWidget* parent) : QScrollArea(parent) {
  setFrameShape(NoFrame);
  setWidgetResizable(true);
  setFocusPolicy(Qt::NoFocus);
  auto* list = new QWidget;
  list->setBackgroundRole(QPalette::Base);
  list->setAutoFillBackground(true);
  column_ = new QVBoxLayout(list);
  column_->setContentsMargins(0, ulo::gap(this), 0, ulo::gap(this));
  column_->setSpacing(0);
  styleFields(list);
  setWidget(list);
  ulo::makeTouchable(this);
  connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
    if (now != nullptr && widget()->isAncestorOf(now))
      reveal(now);
  });
}

void FormRows::addRow(const QString& label, QWidget* field, bool grows) {
  auto* row = new FormRow(label, field, grows);
  rows_.push_back(row);
  column_->addWidget(row, grows ? 1 : 0);
}

// Together with its label, if both fit.
void FormRows::reveal(QWidget* field) {
  for (FormRow* row : rows_)
    if (row->isAncestorOf(field))
      ensureWidgetVisible(row, 0, 0);
  ensureWidgetVisible(field, 0, 0);
}

void FormRows::resizeEvent(QResizeEvent* event) {
  const bool wide = width() >= ulo::scaled(this, wideScreen);
  for (FormRow* row : rows_)
    row->setWide(wide);
  QScrollArea::resizeEvent(event);
  // An on-screen keyboard covers a part of the form.
  if (QWidget* field = QApplication::focusWidget();
      field != nullptr && widget()->isAncestorOf(field))
    reveal(field);
}

}  // namespace tasks
