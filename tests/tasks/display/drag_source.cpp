// drag_source FILE: a window from which the file can be dragged. Its title changes when the window
// below the pointer accepts the file.

#include <QApplication>
#include <QDrag>
#include <QMimeData>
#include <QUrl>
#include <QWidget>

namespace {

class Source : public QWidget {
public:
  explicit Source(const QString& file) : file_(file) { setWindowTitle("Drag from here"); }

protected:
  void mousePressEvent(QMouseEvent*) override {
    auto* data = new QMimeData;
    data->setUrls({QUrl::fromLocalFile(file_)});
    auto* drag = new QDrag(this);
    drag->setMimeData(data);
    connect(drag, &QDrag::actionChanged, this, [this](Qt::DropAction action) {
      setWindowTitle(action == Qt::IgnoreAction ? "Drag from here" : "Taken here");
    });
    drag->exec(Qt::CopyAction);
  }

private:
  QString file_;
};

}  // namespace

int main(int count, char** arguments) {
  QApplication application(count, arguments);
  Source source(QApplication::arguments().value(1));
  source.setGeometry(0, 0, 100, 100);
  source.show();
  return QApplication::exec();
}
