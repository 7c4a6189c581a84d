#include "workbench/qt/LookSettings.h"

#include <QCryptographicHash>
#include <algorithm>
#include <array>

namespace kalvex::window {

namespace {

constexpr std::array<const char*, 3> kSchemes = {"jasny", "ciemny", "pulpit"};
constexpr int kMostSearches = 20;

// A path may hold what a key may not.
QString PlaceKey(const QString& script) {
    const QByteArray digest =
        QCryptographicHash::hash(script.toUtf8(), QCryptographicHash::Sha1).toHex();
    return QStringLiteral("skrypty/") + QString::fromLatin1(digest.left(16));
}

}  // namespace

LookSettings::LookSettings(const QString& path) : m_settings(path, QSettings::IniFormat) {}

void LookSettings::SetMain(const QByteArray& geometry, const QByteArray& state) {
    m_settings.setValue(QStringLiteral("okno/miejsce"), geometry);
    m_settings.setValue(QStringLiteral("okno/paski"), state);
}

std::optional<FramePlace> LookSettings::GetPlace(const QString& script) const {
    const QVariantList values = m_settings.value(PlaceKey(script)).toList();
    if (values.size() != 5) return std::nullopt;
    FramePlace place;
    place.rectangle =
        QRect(values[0].toInt(), values[1].toInt(), values[2].toInt(), values[3].toInt());
    place.maximised = values[4].toInt() != 0;
    if (!place.rectangle.isValid()) return std::nullopt;
    return place;
}

void LookSettings::SetPlace(const QString& script, const FramePlace& place) {
    const QRect& at = place.rectangle;
    m_settings.setValue(PlaceKey(script), QVariantList{at.x(), at.y(), at.width(), at.height(),
                                                       place.maximised ? 1 : 0});
}

Scheme LookSettings::GetScheme() const {
    const QByteArray name = Value("okno/schemat").toString().toLatin1();
    const auto found = std::ranges::find(kSchemes, std::string_view(name.constData()));
    if (found == kSchemes.end()) return Scheme::Desktop;
    return static_cast<Scheme>(found - kSchemes.begin());
}

void LookSettings::SetScheme(Scheme scheme) {
    m_settings.setValue(QStringLiteral("okno/schemat"),
                        QLatin1String(kSchemes[static_cast<std::size_t>(scheme)]));
}

bool LookSettings::IsOn(const char* name, bool usually) const {
    return m_settings.value(QStringLiteral("widok/") + QLatin1String(name), usually).toBool();
}

void LookSettings::SetOn(const char* name, bool on) {
    m_settings.setValue(QStringLiteral("widok/") + QLatin1String(name), on);
}

void LookSettings::AddRecentFile(const QString& path) {
    QStringList files = GetRecentFiles();
    files.removeAll(path);
    files.prepend(path);
    m_settings.setValue(QStringLiteral("pliki/ostatnie"), files.mid(0, kMostRecent));
}

void LookSettings::RemoveRecentFile(const QString& path) {
    QStringList files = GetRecentFiles();
    files.removeAll(path);
    m_settings.setValue(QStringLiteral("pliki/ostatnie"), files);
}

void LookSettings::SetSearches(const QStringList& texts) {
    m_settings.setValue(QStringLiteral("szukanie/teksty"), texts.mid(0, kMostSearches));
}

}  // namespace kalvex::window
