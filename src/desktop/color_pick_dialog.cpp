#include "desktop/color_pick_dialog.h"

#include <QtGui/QGuiApplication>
#include <QtGui/QKeyEvent>
#include <QtGui/QPainter>
#include <QtGui/QScreen>
#include <QtGui/QTextLayout>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QFrame>
#include <algorithm>
#include <functional>
#include <utility>

#include "color/color_pick.h"
#include "desktop/display_text.h"
#include "desktop/key_codes.h"
#include "desktop/placing.h"
#include "desktop/told_font.h"
#include "desktop/twips.h"

namespace dravenna {

namespace {

constexpr int kBorder = 2;  // of picBigBox, in pixels
constexpr std::uint32_t kFormColor = 0xE0E0E0;

// A ring of white in a rim of black, hollow; its centre is the pointer's place.
QCursor ringCursor() {
  constexpr int kSize = 15, kCentre = 7;
  QPixmap ring(kSize, kSize);
  ring.fill(Qt::transparent);
  QPainter painter(&ring);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  const auto disc = [&](const QBrush& brush, qreal diameter) {
    painter.setBrush(brush);
    const qreal edge = (kSize - diameter) / 2;
    painter.drawEllipse(QRectF(edge, edge, diameter, diameter));
  };
  disc(Qt::black, kSize);
  disc(Qt::white, kSize - 2);
  painter.setCompositionMode(QPainter::CompositionMode_Clear);
  disc(Qt::black, kSize - 6);
  painter.end();
  return QCursor(ring, kCentre, kCentre);
}

class ColorField final : public QFrame {
 public:
  ColorField(ColorPick& picker, QWidget* parent, std::function<void()> changed)
      : QFrame(parent), picker_(picker), changed_(std::move(changed)) {
    setObjectName(QStringLiteral("picBigBox"));
    setAccessibleName(QStringLiteral("Colour field"));
    setFrameStyle(QFrame::Panel | QFrame::Sunken);
    setLineWidth(kBorder);
    setMouseTracking(true);
    setCursor(ringCursor());
  }

 protected:
  void paintEvent(QPaintEvent* event) override {
    const PictureBox& picture = picker_.picBigBox;
    const QImage image(reinterpret_cast<const uchar*>(picture.pixels().data()), picture.width(), picture.height(),
                       qsizetype{picture.width()} * 4, QImage::Format_RGBX8888);
    QPainter painter(this);
    painter.drawImage(kBorder, kBorder, image);
    painter.end();
    QFrame::paintEvent(event);
  }
  void mousePressEvent(QMouseEvent* event) override { tell(event, &ColorPick::picBigBox_MouseDown); }
  void mouseDoubleClickEvent(QMouseEvent* event) override { tell(event, &ColorPick::picBigBox_MouseDown); }
  void mouseMoveEvent(QMouseEvent* event) override { tell(event, &ColorPick::picBigBox_MouseMove); }
  void mouseReleaseEvent(QMouseEvent* event) override { tell(event, &ColorPick::picBigBox_MouseUp); }

 private:
  void tell(QMouseEvent* event, void (ColorPick::*handler)(std::int32_t, std::int32_t)) {
    // The place is the corner of a pixel of the screen, and its middle is what the painter looks at; between two pixels
    // of the picture it takes the first. In the window the place is exact, in its widgets it is rounded.
    const double middle = 0.49 / devicePixelRatioF();
    const QPointF at = event->scenePosition() - mapTo(window(), QPoint()) + QPointF(middle, middle);
    (picker_.*handler)(qFloor(at.x()) - kBorder, qFloor(at.y()) - kBorder);
    changed_();
  }

  ColorPick& picker_;
  std::function<void()> changed_;
};

class Swatch final : public QWidget {
 public:
  Swatch(const ColorPick& picker, QWidget* parent) : QWidget(parent), picker_(picker) {
    setObjectName(QStringLiteral("iPreview"));
  }

 protected:
  void paintEvent(QPaintEvent*) override { QPainter(this).fillRect(rect(), toQt(picker_.iPreview.BackColor)); }

 private:
  const ColorPick& picker_;
};

// One line of text, centred. Where it is too wide, the coloured part is what stays in view.
class PreviewLine final : public QWidget {
 public:
  PreviewLine(const RichTextBox& model, QWidget* parent) : QWidget(parent), model_(model) {
    setObjectName(QStringLiteral("RFF"));
    setFont(toldFont(true));
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
    const std::u16string& text = model_.Text();
    QList<QTextLayout::FormatRange> formats;
    int firstColored = -1, lastColored = -1;
    for (int i = 0; i < static_cast<int>(text.size()); ++i) {
      const std::uint32_t color = model_.colorAt(static_cast<std::size_t>(i));
      if (color != 0) {
        if (firstColored < 0) firstColored = i;
        lastColored = i + 1;
      }
      if (!formats.isEmpty() && formats.constLast().format.foreground().color() == toQt(color)) {
        ++formats.last().length;
        continue;
      }
      QTextCharFormat format;
      format.setForeground(toQt(color));
      formats.append({i, 1, format});
    }
    QTextLayout layout(displayText(text), font());
    layout.setFormats(formats);
    layout.beginLayout();
    const QTextLine made = layout.createLine();
    layout.endLayout();
    if (!made.isValid()) return;
    const QTextLine line = layout.lineAt(0);
    const qreal spare = width() - line.naturalTextWidth();
    qreal left = spare / 2;
    if (spare < 0 && firstColored >= 0) {
      left = std::clamp((width() - line.cursorToX(firstColored) - line.cursorToX(lastColored)) / 2, spare, 0.0);
    }
    layout.draw(&painter, QPointF(left, (height() - line.height()) / 2));
  }

 private:
  const RichTextBox& model_;
};

class TickButton final : public QAbstractButton {
 public:
  explicit TickButton(QWidget* parent) : QAbstractButton(parent) {
    setObjectName(QStringLiteral("Command1"));
    setAccessibleName(QStringLiteral("Apply"));
    setFocusPolicy(Qt::StrongFocus);
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    constexpr int kPicture = 13;
    QPainter painter(this);
    painter.fillRect(rect(), toQt(kFormColor));
    painter.setPen(hasFocus() ? Qt::black : QColor(Qt::darkGray));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    const QRect picture((width() - kPicture) / 2, (height() - kPicture) / 2, kPicture, kPicture);
    painter.fillRect(picture, isDown() ? toQt(kFormColor) : QColor(Qt::white));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::black, 2));
    painter.translate(picture.topLeft());
    painter.drawPolyline(QPolygonF({{2.5, 6.5}, {5.5, 9.5}, {10.5, 3.5}}));
  }
};

}  // namespace

ColorPickDialog::ColorPickDialog(ColorPick& picker, QWidget* owner)
    : QDialog(owner, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      picker_(picker) {
  setObjectName(QStringLiteral("ColorPick"));
  setWindowTitle(QStringLiteral(" NPC Edit Color"));
  setFixedSize(pixels(3960), pixels(4170));
  QPalette colors = palette();
  for (const auto group : {QPalette::Active, QPalette::Inactive}) {
    colors.setColor(group, QPalette::Window, toQt(kFormColor));
  }
  setPalette(colors);

  const auto place = [](QWidget* control, int left, int top, int width, int height) {
    control->setGeometry(pixels(left), pixels(top), pixels(width), pixels(height));
  };
  place(new ColorField(picker_, this, [this] { synchronise(); }), 30, 30, 3915, 3870);
  auto* Command1 = new TickButton(this);
  place(Command1, 60, 3930, 225, 225);
  connect(Command1, &QAbstractButton::clicked, this, [this] {
    picker_.Command1_Click();
    synchronise();
  });
  place(new Swatch(picker_, this), 300, 3960, 135, 135);
  place(new PreviewLine(picker_.RFF, this), 480, 3930, 3435, 195);
  Command1->setFocus();
  installEventFilter(this);
  for (QWidget* control : findChildren<QWidget*>()) control->installEventFilter(this);
}

void ColorPickDialog::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (const QScreen* on = screen()) new Placing(*this, centredIn(on->availableGeometry()));
}

void ColorPickDialog::reject() {
  picker_.HidePicker();
  synchronise();
}

bool ColorPickDialog::eventFilter(QObject* object, QEvent* event) {
  if (event->type() != QEvent::KeyPress) return QDialog::eventFilter(object, event);
  std::int16_t KeyCode = keyEventOf(*static_cast<QKeyEvent*>(event)).KeyCode;
  if (KeyCode == 0) return false;
  picker_.Form_KeyDown(KeyCode);
  if (KeyCode != 0) return false;
  event->accept();
  synchronise();
  return true;
}

void ColorPickDialog::synchronise() {
  if (picker_.hidden) return done(Accepted);
  for (QWidget* control : findChildren<QWidget*>()) control->update();
}

}  // namespace dravenna
