#include "list/filter_bar.h"

#include "choice_field.h"
#include "field_look.h"
#include "task_texts.h"
#include "ulo/look.h"
#include "ulo/texts.h"

#include <QAbstractItemView>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QSignalBlocker>

namespace tasks {

FilterBar::FilterBar(QWidget* parent)
    : QWidget(parent), search_(new QLineEdit(this)), category_(new ChoiceField(this)) {
  styleFields(this);
  auto* line = new QHBoxLayout(this);
  const int gap = ulo::gap(this);
  line->setContentsMargins(gap, gap / 2, gap, gap / 2);
  line->setSpacing(gap);
  line->addWidget(search_, 1);
  line->addWidget(category_, 1);
  const QString search = ulo::text("TXT_RID_STANDARD_SEARCH", "Search");
  search_->setPlaceholderText(search);
  search_->setAccessibleName(search);
  search_->setMinimumSize(0, ulo::touchHeight(this));
  search_->installEventFilter(this);
  category_->setAccessibleName(ulo::text("TXT_RID_STANDARD_CATEGORY", "Category"));
  setCategories({});
  // Not before there is a text to clear: the button's icon makes Qt load all of its plug-ins for
  // image formats.
  connect(search_, &QLineEdit::textChanged, this, [this] { search_->setClearButtonEnabled(true); });
  connect(search_, &QLineEdit::textChanged, this, &FilterBar::changed);
  connect(category_, &QComboBox::currentIndexChanged, this, &FilterBar::changed);
}

void FilterBar::setCategories(const QValueList<QString>& names) {
  if (category_->view()->isVisible())
    return;
  const QVariant chosen = category_->currentData();
  bool isGone = false;
  {
    const QSignalBlocker quiet(category_);
    category_->clear();
    category_->addItem(ulo::text("TXT_RID_STANDARD_ALL_CATEGORIES", "All Categories"));
    category_->addItem(categoryText(QString()), QString(""));
    for (const QString& name : names)
      if (!isNoCategory(name) && category_->findData(name) < 0)
        category_->addItem(categoryText(name), name);
    const int same = chosen.isValid() ? category_->findData(chosen) : 0;
    isGone = same < 0;
    category_->setCurrentIndex(std::max(same, 0));
  }
  if (isGone)
    Q_EMIT changed();
}

ListFilter FilterBar::filter() const {
  ListFilter filter;
  filter.words = search_->text().split(u' ', Qt::SkipEmptyParts);
  if (const QVariant name = category_->currentData(); name.isValid())
    filter.category = name.toString();
  return filter;
}

void FilterBar::clear() {
  {
    const QSignalBlocker quietSearch(search_);
    const QSignalBlocker quietCategory(category_);
    search_->clear();
    category_->setCurrentIndex(0);
  }
  Q_EMIT changed();
}

void FilterBar::type(const QString& text) {
  search_->setFocus();
  search_->end(false);
  search_->insert(text);
}

bool FilterBar::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::KeyPress)
    return QWidget::eventFilter(watched, event);
  switch (static_cast<QKeyEvent*>(event)->key()) {
  case Qt::Key_Escape:
    search_->clear();
    Q_EMIT left();
    return true;
  case Qt::Key_Return:
  case Qt::Key_Enter:
  case Qt::Key_Down:
    Q_EMIT left();
    return true;
  default:
    return false;
  }
}

}  // namespace tasks
