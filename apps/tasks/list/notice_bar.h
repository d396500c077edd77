// What has just been done, for some seconds.
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

  // Stays until it is hidden, and offers to take back what was done.
  void showUndoable(const QString& text);
  // Goes by itself, some seconds after it was first seen. Waits for one that offers to take
  // something back.
  void showMessage(const QString& text);
  // Of what can be taken back; a message stays, or comes.
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
  QString next_;  // the message that waits
  QTimer time_{this};
};

}  // namespace tasks
