#pragma once

#include "choice_field.h"

class ZTASK_ENG_Model;

namespace tasks {

// The category of a task: none, a stored one, or a new one, which the field asks for and which is
// stored together with the task.
class CategoryField : public ChoiceField {
  Q_OBJECT

public:
  explicit CategoryField(QWidget* parent = nullptr);

  // Offers the store's categories and `category`, and shows `category`.
  void setStored(ZTASK_ENG_Model& store, const QString& category);
  // Null for none.
  [[nodiscard]] QString category() const { return chosen_; }

Q_SIGNALS:
  // Emitted when the user has chosen a category.
  void chosen();

private:
  void take(int index);
  void askForName();
  void takeName(QString name);
  void choose(const QString& category);
  [[nodiscard]] int placeOf(const QString& category) const;
  [[nodiscard]] bool asks(int index) const { return index == count() - 1; }

  QString chosen_;
};

}  // namespace tasks
