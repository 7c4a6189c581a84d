// How the window looks, kept in a file beside the profile that may be deleted at any time: places,
// zoom, scheme, recent files and texts. What cannot be written is lost without a word. Main thread.
#pragma once

#include <QByteArray>
#include <QRect>
#include <QSettings>
#include <QString>
#include <QStringList>
#include <optional>

namespace kalvex::window {

enum class Scheme { Light, Dark, Desktop };

// Where the window of a script stands in its area.
struct FramePlace {
    QRect rectangle;
    bool maximised = false;
};

class LookSettings {
  public:
    static constexpr int kMostRecent = 10;

    // The path of the file.
    explicit LookSettings(const QString& path);

    // Of the main window, as the toolkit keeps them.
    QByteArray GetGeometry() const { return Value("okno/miejsce").toByteArray(); }
    QByteArray GetState() const { return Value("okno/paski").toByteArray(); }
    void SetMain(const QByteArray& geometry, const QByteArray& state);

    std::optional<FramePlace> GetPlace(const QString& script) const;
    void SetPlace(const QString& script, const FramePlace& place);

    Scheme GetScheme() const;
    void SetScheme(Scheme scheme);
    int GetZoom() const { return Value("edytor/powiekszenie").toInt(); }
    void SetZoom(int zoom) { m_settings.setValue(QStringLiteral("edytor/powiekszenie"), zoom); }
    bool IsOn(const char* name, bool usually) const;
    void SetOn(const char* name, bool on);

    // The newest first.
    QStringList GetRecentFiles() const { return Value("pliki/ostatnie").toStringList(); }
    void AddRecentFile(const QString& path);
    void RemoveRecentFile(const QString& path);
    QStringList GetSearches() const { return Value("szukanie/teksty").toStringList(); }
    void SetSearches(const QStringList& texts);

  private:
    QVariant Value(const char* key) const { return m_settings.value(QLatin1String(key)); }

    QSettings m_settings;
};

}  // namespace kalvex::window
