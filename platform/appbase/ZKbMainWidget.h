// A screen: title, content and soft key bar.
#pragma once

#include "ulo/export.h"

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

  // One line, elided if too long. Also sets the window title.
  void setAppTitle(const QString& title);
  [[nodiscard]] QString appTitle() const { return title_; }
  // The screen owns its content widget and its soft keys. Setting another one deletes the previous
  // one.
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
