// Versions of scripts, and copies of what is not saved.
#include <QDateTime>

#include "platform/SteadyTime.h"
#include "text/CodePage.h"
#include "workbench/qt/HistoryDialog.h"
#include "workbench/qt/ScriptFiles.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

constexpr const char* kRestoreText =
    platform::Translatable("Skrypt %s ma niezapisany tekst z %s. Czy przywrócić ten tekst?");
constexpr const char* kRestoreChanged = platform::Translatable(
    "Skrypt %s ma niezapisany tekst z %s, a jego plik zmienił się od tego czasu. Czy przywrócić "
    "ten tekst?");

std::string TimeText(std::int64_t time) {
    return QDateTime::fromSecsSinceEpoch(time)
        .toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))
        .toStdString();
}

}  // namespace

std::string ScriptFiles::KeyOf(const engine::CKalvexDoc& document) const {
    if (!document.GetPathName().empty()) return platform::NativePath(document.GetPathName());
    const auto known = m_known.find(&document);
    return workbench::RecoveryStore::KeyOfNew(m_parts.frames.BaseTitle(document).toStdString(),
                                              known == m_known.end() ? 0 : known->second.opened);
}

void ScriptFiles::ShowHistory(engine::CKalvexDoc& document) {
    const std::string path = platform::NativePath(document.GetPathName());
    HistoryDialog dialog(
        {m_parts.translator,
         [this, &document](const std::string& text) {
             if (IsOpen(document)) PutText(document, text);
         },
         [this](const std::string& message) { m_parts.ask(BoxKind::Message, ToQt(message)); }},
        workbench::SnapshotStore::List(path), document.Text().GetText(), &m_parts.parent);
    dialog.exec();
}

void ScriptFiles::TellFault(const platform::Notice& notice) {
    if (!notice) return;
    m_parts.app.Log().Log(text::FromUtf8(platform::InWords(notice, m_parts.translator)),
                          platform::LogErrors);
}

void ScriptFiles::KeepCopies(bool all) {
    const std::int64_t elapsed = platform::SteadyMilliseconds();
    for (CChildFrame* frame : m_parts.frames.All()) {
        engine::CKalvexDoc& document = frame->Document();
        if (!document.IsModified()) continue;
        const std::string key = KeyOf(document);
        if (m_givenUp.contains(key) || (!all && !m_recovery.IsDue(key, elapsed))) continue;
        std::optional<std::string_view> saved;
        if (!document.GetPathName().empty()) saved = m_known[&document].content;
        TellFault(
            m_recovery.Keep(key, document.Text().GetText(), saved, m_parts.clock.Now(), elapsed));
    }
}

// A script that runs cannot take the text, and is asked about when it can.
void ScriptFiles::OfferCopy(engine::CKalvexDoc& document) {
    if (document.IsReadOnly()) {
        m_later.insert(&document);
        return;
    }
    m_later.erase(&document);
    const std::string key = KeyOf(document);
    const workbench::RecoveryOffer offer = m_recovery.Find(key, m_known[&document].content);
    TellFault(offer.fault);
    if (!offer.copy) return;
    const BoxAnswer answer =
        m_parts.ask(BoxKind::YesNo, Say(offer.copy->fileChanged ? kRestoreChanged : kRestoreText,
                                        {FromQt(NameOf(document)), TimeText(offer.copy->time)}));
    if (!IsOpen(document)) return;
    if (answer == BoxAnswer::Yes) {
        PutText(document, offer.copy->text);
    } else {
        m_recovery.Drop(key);
    }
}

void ScriptFiles::OfferCopies() {
    std::vector<platform::Notice> faults;
    for (const workbench::RecoveryCopy& copy : m_recovery.FindNew(faults)) {
        const std::string title = text::FromUtf8(workbench::RecoveryStore::TitleOfNew(copy.key));
        const BoxAnswer answer =
            m_parts.ask(BoxKind::YesNo, Say(kRestoreText, {title, TimeText(copy.time)}));
        m_recovery.Drop(copy.key);
        if (answer != BoxAnswer::Yes) continue;
        engine::CKalvexDoc& document = m_parts.app.NewScript();
        m_parts.frames.Activate(document);
        PutText(document, copy.text);
    }
    for (const platform::Notice& fault : faults) TellFault(fault);
    for (engine::CKalvexDoc* document : OpenScripts()) {
        if (IsOpen(*document)) OfferCopy(*document);
    }
}

void ScriptFiles::OfferLater() {
    for (engine::CKalvexDoc* document : std::set(m_later)) {
        if (IsOpen(*document) && !document->IsReadOnly()) OfferCopy(*document);
    }
}

void ScriptFiles::PutText(engine::CKalvexDoc& document, const std::string& text) {
    CKalvexEditCtrl& editor = m_parts.frames.FrameOf(document).NeedEditor();
    QByteArray bytes = ToQt(text).toUtf8();
    bytes.replace("\r\n", "\n");
    editor.ReplaceAll({{0, static_cast<int>(editor.Bytes().size()), bytes}});
}

}  // namespace kalvex::window
