// Takes pictures of windows by showing them on the display and saving the display's content.
#pragma once

#include "ZApplication.h"

#include <QDialog>
#include <QDir>
#include <QLocale>
#include <QScreen>
#include <QTest>
#include <QTimer>

#include <cstdio>
#include <optional>

class Camera {
public:
  // Sets up the application according to its arguments. If they are invalid, prints a message to
  // standard error and returns nothing.
  static std::optional<Camera> fromArguments(ZApplication& application) {
    const QStringList words = QApplication::arguments();
    const QStringList size = words.value(2).split(u'x');
    if (words.size() < 4 || size.size() != 2 || !QDir().mkpath(words[1])) {
      static_cast<void>(std::fprintf(stderr, "usage: %s DIRECTORY WIDTHxHEIGHT LANGUAGE [POINTS]\n",
                                     qPrintable(words[0])));
      return std::nullopt;
    }
    application.setLanguages({words[3]});
    // Also for languages without translations.
    QApplication::setLayoutDirection(QLocale(words[3]).textDirection());
    QLocale::setDefault(QLocale(words[3]));
    if (words.size() > 4) {
      QFont font = QApplication::font();
      font.setPointSize(words[4].toInt());
      QApplication::setFont(font);
    }
    return Camera(words[1], QSize(size[0].toInt(), size[1].toInt()));
  }

  // Shows the window on the whole display.
  void show(QWidget& window) const {
    window.setGeometry(QRect(QPoint(0, 0), size_));
    window.show();
    static_cast<void>(QTest::qWaitForWindowExposed(&window));
    window.activateWindow();
    QTest::qWait(settle);
  }
  void shoot(const char* name) const {
    QTest::qWait(settle);
    const QPixmap picture = QGuiApplication::primaryScreen()->grabWindow(0);
    const QString file = QStringLiteral("%1/%2.png").arg(directory_, QLatin1String(name));
    if (!picture.copy(QRect(QPoint(0, 0), size_ * picture.devicePixelRatio())).save(file))
      static_cast<void>(std::fprintf(stderr, "cannot write %s\n", qPrintable(file)));
  }
  // Runs a modal dialog, takes its picture and closes it.
  void shootDialog(QDialog& dialog, const char* name) const {
    QTimer::singleShot(settle, &dialog, [&] {
      shoot(name);
      dialog.reject();
    });
    dialog.exec();
  }

private:
  Camera(QString directory, QSize size) : directory_(std::move(directory)), size_(size) {}

  static constexpr int settle = 150;  // milliseconds

  QString directory_;
  QSize size_;
};

// The main function of a program that takes these pictures.
inline int takePictures(int count, char** arguments,
                        std::initializer_list<void (*)(const Camera&)> pictures) {
  ZApplication application(count, arguments);
  const std::optional<Camera> camera = Camera::fromArguments(application);
  if (!camera)
    return 2;
  for (const auto& take : pictures)
    take(*camera);
  return 0;
}
