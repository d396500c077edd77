// The controls of the filter of the list.
#pragma once

#include "list/task_list_model.h"

#include <QWidget>

class QLineEdit;

namespace tasks {

class ChoiceField;

// A search line and a choice of one category.
class FilterBar : public QWidget {
  Q_OBJECT

public:
  explicit FilterBar(QWidget* parent);

  // Sets the categories to choose from. The chosen one stays chosen while it is among them.
  void setCategories(const QValueList<QString>& names);
  [[nodiscard]] ListFilter filter() const;
  // Removes the filter.
  void clear();
  // Moves the focus to the search line and appends this text.
  void type(const QString& text);

Q_SIGNALS:
  void changed();
  // Emitted when the user leaves the search line.
  void left();

protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

private:
  QLineEdit* search_;
  ChoiceField* category_;
};

}  // namespace tasks
