#include "form/category_field.h"

#include "ZTASK_ENG_Model.h"
#include "form/name_dialog.h"
#include "modal.h"
#include "task_texts.h"
#include "ulo/texts.h"

#include <QCollator>

#include <algorithm>
#include <vector>

namespace tasks {

CategoryField::CategoryField(QWidget* parent) : ChoiceField(parent) {
  connect(this, &QComboBox::activated, this, &CategoryField::take);
}

void CategoryField::setStored(ZTASK_ENG_Model& store, const QString& category) {
  QValueList<QString> stored;
  // If the store fails, this one and new ones can still be chosen.
  static_cast<void>(store.getAllCategories(stored));
  std::vector<QString> names;
  std::copy_if(stored.begin(), stored.end(), std::back_inserter(names),
               [](const QString& name) { return !isNoCategory(name); });
  QCollator order;
  order.setCaseSensitivity(Qt::CaseInsensitive);
  std::sort(names.begin(), names.end(), [&order](const QString& left, const QString& right) {
    return order(categoryText(left), categoryText(right));
  });
  clear();
  addItem(categoryText({}), QString());
  for (const QString& name : names)
    addItem(categoryText(name), name);
  addItem(ulo::text("TXT_RID_STANDARD_NEW_CATEGORY", "New Category\xe2\x80\xa6"));
  choose(category);
}

// The index of the choice with this name or text; -1 if there is none.
int CategoryField::placeOf(const QString& category) const {
  if (isNoCategory(category))
    return 0;
  for (int i = 1; !asks(i); ++i)
    if (itemData(i).toString() == category)
      return i;
  return -1;
}

void CategoryField::choose(const QString& category) {
  int place = placeOf(category);
  if (place < 0) {
    place = count() - 1;
    insertItem(place, categoryText(category), category);
  }
  setCurrentIndex(place);
  chosen_ = itemData(place).toString();
}

void CategoryField::take(int index) {
  if (asks(index)) {
    askForName();
    return;
  }
  chosen_ = itemData(index).toString();
  Q_EMIT chosen();
}

void CategoryField::askForName() {
  ulo::Modal<NameDialog> dialog(this);
  // A key that follows at once may store the form before exec() returns.
  connect(dialog.get(), &QDialog::accepted, this, [this, &dialog] { takeName(dialog->name()); });
  if (!dialog.exec() && dialog.isThere())
    choose(chosen_);
}

void CategoryField::takeName(QString name) {
  // A user who types the translated name of a category means that category.
  if (const int worded = findText(name); placeOf(name) < 0 && worded >= 0 && !asks(worded))
    name = itemData(worded).toString();
  choose(name);
  Q_EMIT chosen();
}

}  // namespace tasks
