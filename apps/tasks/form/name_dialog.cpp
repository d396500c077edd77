#include "form/name_dialog.h"

#include "ZSoftKey.h"
#include "ZWrappedText.h"
#include "field_look.h"
#include "form/line_field.h"
#include "ulo/look.h"
#include "ulo/texts.h"

#include <QVBoxLayout>

namespace tasks {

namespace {

// The length that lists of categories can show.
constexpr qsizetype nameLimit = 64;

}  // namespace

NameDialog::NameDialog(QWidget* parent)
    : ZPopup(ulo::text("TXT_RID_HEADER_NEW_CATEGORY", "New Category"), parent),
      line_(new LineField(nameLimit)) {
  setKeys(ulo::text("TXT_RID_SOFTKEY_OK", "OK"), ulo::text("TXT_RID_SOFTKEY_CANCEL", "Cancel"));
  const QString question =
      ulo::text("TXT_RID_INSTRUCTIONALTXT_CATEGORY_NAME", "Name of the category:");
  line_->setAccessibleName(question);
  auto* content = new QWidget;
  auto* column = new QVBoxLayout(content);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(ulo::gap(this));
  column->addWidget(new ZWrappedText(question));
  column->addWidget(line_);
  styleFields(content);
  setContent(content);
  line_->setFocus();
  const auto enable = [this] { keys()->setKeyEnabled(ZSoftKey::left, !name().isEmpty()); };
  connect(line_, &QLineEdit::textChanged, this, enable);
  enable();
}

QString NameDialog::name() const {
  return line_->text().trimmed();
}

void NameDialog::accept() {
  if (!name().isEmpty())
    ZPopup::accept();
}

}  // namespace tasks
