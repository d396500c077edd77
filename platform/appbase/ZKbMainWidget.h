// A screen: a title, a content, a bar of soft keys.
#pragma once

#include "export.h"

#include <QWidget>

class QVBoxLayout;
class ZSoftKey;
namespace ulo {
class TitleBar;
}

class ULO_EXPORT ZKbMainWidget : public QWidget {
  Q_OBJECT

public:
  explicit ZKbMainWidget(QWidget* parent = nullptr, const char* name = nullptr,
                         unsigned int flags = 0);

  // One line, elided where it is too long. The window's title as well.
  void setAppTitle(const QString& title);
  [[nodiscard]] QString appTitle() const { return title_; }
  // The screen owns what it shows; one that is replaced is deleted.
  void setContentWidget(QWidget* content);
  [[nodiscard]] QWidget* contentWidget() const { return content_; }
  void setCSTWidget(ZSoftKey* keys);
  [[nodiscard]] ZSoftKey* cstWidget() const { return keys_; }

  [[nodiscard]] QSize sizeHint() const override;

protected:
  void keyPressEvent(QKeyEvent* event) override;

private:
  QVBoxLayout* column_;
  ulo::TitleBar* bar_;
  QString title_;
  QWidget* content_ = nullptr;
  ZSoftKey* keys_ = nullptr;
};
