// What the list leaves out, as the user says it.
#pragma once

#include "list/task_list_model.h"

#include <QWidget>

class QLineEdit;

namespace tasks {

class ChoiceField;

// A line to search in and a choice of one category.
class FilterBar : public QWidget {
  Q_OBJECT

public:
  explicit FilterBar(QWidget* parent);

  // The categories to choose from; one that is chosen stays so while it is among them.
  void setCategories(const QValueList<QString>& names);
  [[nodiscard]] ListFilter filter() const;
  // Leaves nothing out.
  void clear();
  // Goes on typing in the search line, with this text behind what is there.
  void type(const QString& text);

Q_SIGNALS:
  void changed();
  // The user is done with the search line.
  void left();

protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

private:
  QLineEdit* search_;
  ChoiceField* category_;
};

}  // namespace tasks
