// Messages about the latest action.
#pragma once

#include <QTimer>
#include <QWidget>

class QBoxLayout;
class QToolButton;
class ZWrappedText;

namespace tasks {

class NoticeBar : public QWidget {
  Q_OBJECT

public:
  explicit NoticeBar(QWidget* parent);

  // Shows a text with an undo button until hideUndoable() is called.
  void showUndoable(const QString& text);
  // Shows a message for some seconds, once the bar is visible and no undo button is shown.
  void showMessage(const QString& text);
  // Hides a text with an undo button. A message stays, or is shown next.
  void hideUndoable();

Q_SIGNALS:
  void undoAsked();

protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void showEvent(QShowEvent* event) override;

private:
  void showText(const QString& text, bool isUndoable);
  void arrange();

  QBoxLayout* line_;
  ZWrappedText* text_;
  QToolButton* undo_;
  QString next_;  // the message to show next
  QTimer time_{this};
};

}  // namespace tasks
