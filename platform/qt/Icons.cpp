#include "platform/qt/Icons.h"

#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QPixmapCache>
#include <QSvgRenderer>
#include <array>
#include <string_view>

#include "platform/qt/Look.h"

// Outside of all namespaces, as the toolkit wants it: the drawings stand in a library, which links
// in only what is asked for.
static void LoadDrawings() { Q_INIT_RESOURCE(icons); }

namespace dbkeeper::qt {

namespace {

// The colours that the pictures are drawn in, for a light background, and what stands for them.
struct ColorRow {
  const char* light;
  const char* dark;
  const char* selected;
};
constexpr std::array<ColorRow, 6> kColors = {{
    {"#44515f", "#c3cdd8", "#ffffff"},
    {"#eef3f9", "#36414d", "#5a8fcb"},
    {"#2f6fb7", "#6fabea", "#ffffff"},
    {"#cfe0f4", "#2b4868", "#5a8fcb"},
    {"#2e9b57", "#5cc184", "#ffffff"},
    {"#d9922b", "#e9b356", "#ffffff"},
}};

enum class Background { kLight, kDark, kSelection };

Background BackgroundOf(QIcon::Mode mode) {
  if (mode == QIcon::Selected) return Background::kSelection;
  return IsDark(QGuiApplication::palette()) ? Background::kDark : Background::kLight;
}

QByteArray Drawing(const QString& name, Background background) {
  QFile file(":/icons/" + name + ".svg");
  if (!file.open(QIODevice::ReadOnly)) return {};
  QByteArray drawing = file.readAll();
  if (background == Background::kLight) return drawing;
  for (const ColorRow& row : kColors) {
    drawing.replace(row.light, background == Background::kDark ? row.dark : row.selected);
  }
  return drawing;
}

// Draws a picture when it is shown, so that it follows a change of the desktop's colours.
class DrawingEngine : public QIconEngine {
 public:
  explicit DrawingEngine(QString name) : name_(std::move(name)) {}

  void paint(QPainter* painter, const QRect& place, QIcon::Mode mode, QIcon::State state) override {
    const double scale = painter->device()->devicePixelRatio();
    QPixmap drawn = pixmap(place.size() * scale, mode, state);
    drawn.setDevicePixelRatio(scale);
    painter->drawPixmap(place, drawn);
  }

  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State /*state*/) override {
    const Background background = BackgroundOf(mode);
    const QString key = QString("dbkeeper/%1/%2x%3/%4/%5")
                            .arg(name_)
                            .arg(size.width())
                            .arg(size.height())
                            .arg(static_cast<int>(background))
                            .arg(mode == QIcon::Disabled);
    QPixmap drawn;
    if (QPixmapCache::find(key, &drawn)) return drawn;
    drawn = QPixmap(size);
    drawn.fill(Qt::transparent);
    QPainter painter(&drawn);
    constexpr double kFaint = 0.4;
    if (mode == QIcon::Disabled) painter.setOpacity(kFaint);
    QSvgRenderer(Drawing(name_, background)).render(&painter);
    painter.end();
    QPixmapCache::insert(key, drawn);
    return drawn;
  }

  QIconEngine* clone() const override { return new DrawingEngine(*this); }

 private:
  QString name_;
};

// A node by its level and its text, or, where the text is any name, its parent's.
struct NodeRow {
  int level;
  std::string_view text;
  bool of_parent;
  const char* icon;
};
constexpr std::array<NodeRow, 18> kNodes = {{
    {0, "Config", false, "config"},
    {0, "SQL Server", false, "server"},
    {1, "Database", false, "databases"},
    {1, "Management", false, "management"},
    {1, "Security", false, "security"},
    {2, "Database", true, "database"},
    {2, "Job", false, "job"},
    {2, "BackUpDevice", false, "device"},
    {2, "Process", false, "process"},
    {2, "Lock", false, "lock"},
    {2, "Login", false, "login"},
    {2, "Server role", false, "server-role"},
    {3, "Table", false, "table"},
    {3, "View", false, "view"},
    {3, "Procedure", false, "procedure"},
    {3, "User", false, "user"},
    {3, "Role", false, "role"},
    {3, "Backup", false, "backup"},
}};

}  // namespace

QIcon NamedIcon(const QString& name) {
  LoadDrawings();
  return QIcon(new DrawingEngine(name));
}

QIcon ApplicationIcon() { return NamedIcon("dbkeeper"); }

QIcon NodeIcon(const TreeNode& node) {
  for (const NodeRow& row : kNodes) {
    if (row.level != node.Level()) continue;
    const TreeNode* const named = row.of_parent ? node.Parent() : &node;
    // The server's node goes on with its name.
    const std::string_view text = named->Text();
    if (row.level == 0 ? text.starts_with(row.text) : text == row.text) return NamedIcon(row.icon);
  }
  return {};
}

}  // namespace dbkeeper::qt
