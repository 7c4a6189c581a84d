#include "workbench/qt/ScriptFiles.h"

#include <sys/stat.h>

#include <QFileDialog>
#include <QFileInfo>
#include <algorithm>
#include <utility>

#include "platform/Files.h"
#include "platform/Paths.h"
#include "text/CodePage.h"
#include "text/TextFormat.h"
#include "workbench/qt/FileFilters.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

constexpr const char* kFilter =
    platform::Translatable("Skrypty Kalvex (*.kx)|*.kx|Wszystkie pliki (*.*)|*.*||");
constexpr const char* kNotOpened = platform::Translatable("Nie można otworzyć pliku %s (%s)");
constexpr const char* kNotSaved = platform::Translatable("Nie można zapisać pliku %s (%s)");
constexpr const char* kSaveChanges = platform::Translatable("Czy zapisać zmiany w pliku %s?");
constexpr const char* kSaveForStart = platform::Translatable("Czy zapisać zmiany?");
constexpr const char* kForeign =
    platform::Translatable("Linia %d zawiera znak spoza strony kodowej Windows-1250: %s");
constexpr const char* kIsOpen = platform::Translatable("Plik skryptu %s jest już otwarty");

// A console's reset, for one, takes what is in the file.
bool IsTextOf(const engine::CKalvexDoc& document, std::string_view content) {
    engine::LineList lines;
    lines.SetText(content);
    return lines.GetText() == document.Text().GetText();
}

}  // namespace

QString FileFilter(const platform::Translator& translator) {
    return ToFileFilter(Translated(translator, kFilter));
}

ScriptFiles::ScriptFiles(Parts parts)
    : m_parts(std::move(parts)), m_recovery(m_parts.recoveryFolder) {}

QString ScriptFiles::Say(const char* polish, std::initializer_list<std::string_view> values) const {
    return ToQt(text::FormatText(m_parts.translator.Translate(polish), values));
}

bool ScriptFiles::IsOpen(const engine::CKalvexDoc& document) const {
    return m_known.contains(&document);
}

std::vector<engine::CKalvexDoc*> ScriptFiles::OpenScripts() const {
    std::vector<engine::CKalvexDoc*> scripts;
    for (const auto& document : m_parts.app.Documents().All()) scripts.push_back(document.get());
    return scripts;
}

QString ScriptFiles::NameOf(const engine::CKalvexDoc& document) const {
    const std::string& path = document.GetPathName();
    return path.empty() ? m_parts.frames.BaseTitle(document) : ToQt(path);
}

// ---- opening

void ScriptFiles::New() {
    m_parts.frames.Activate(m_parts.app.NewScript());
}

void ScriptFiles::OpenByDialog() {
    OpenAll(QFileDialog::getOpenFileNames(
        &m_parts.parent, Translated(m_parts.translator, platform::Translatable("Otwórz")),
        QString(), FileFilter(m_parts.translator)));
}

void ScriptFiles::OpenAll(const QStringList& paths) {
    for (const QString& path : paths) Open(path);
}

bool ScriptFiles::Open(const QString& path) {
    const std::string name = FromQt(path);
    std::string error;
    const bool wasOpen = m_parts.app.Documents().Find(name) != nullptr;
    engine::CKalvexDoc* const document = m_parts.app.OpenScript(name, error);
    if (document == nullptr) {
        m_parts.look.RemoveRecentFile(path);
        if (!error.empty()) {
            m_parts.ask(BoxKind::Message, Say(kNotOpened, {m_parts.app.Paths().GetFullPath(name),
                                                           text::FromUtf8(error)}));
        }
        return false;
    }
    m_parts.look.AddRecentFile(ToQt(document->GetPathName()));
    m_parts.frames.Activate(*document);
    if (!wasOpen) OfferCopy(*document);
    return true;
}

// ---- saving

bool ScriptFiles::HasForeignCharacter(engine::CKalvexDoc& document) {
    CChildFrame& frame = m_parts.frames.FrameOf(document);
    if (frame.Editor() == nullptr) return false;
    const std::optional<ForeignCharacter> foreign = frame.Editor()->FirstOutsideWindows1250();
    if (!foreign) return false;
    m_parts.frames.Activate(document);
    frame.Editor()->GoToLine(foreign->line, foreign->column);
    // The character itself is not to be had as an engine text.
    QString told = ToQt(m_parts.translator.Translate(kForeign));
    told.replace(QStringLiteral("%d"), QString::number(foreign->line + 1));
    told.replace(QStringLiteral("%s"), foreign->character);
    m_parts.ask(BoxKind::Message, told);
    return true;
}

bool ScriptFiles::Write(engine::CKalvexDoc& document, const std::string& path) {
    const std::string key = KeyOf(document);
    std::string error;
    if (!m_parts.app.SaveScriptAs(document, path, error)) {
        m_parts.ask(BoxKind::Message, Say(kNotSaved, {path, text::FromUtf8(error)}));
        return false;
    }
    m_recovery.Drop(key);
    OnSaved(document);
    m_parts.look.AddRecentFile(ToQt(document.GetPathName()));
    m_parts.frames.UpdateTitle(document);
    if (CKalvexEditCtrl* editor = m_parts.frames.FrameOf(document).Editor()) editor->ApplyView();
    return true;
}

bool ScriptFiles::Save(engine::CKalvexDoc& document) {
    if (document.GetPathName().empty()) return SaveAs(document);
    if (HasForeignCharacter(document)) return false;
    return Write(document, document.GetPathName());
}

bool ScriptFiles::SaveAs(engine::CKalvexDoc& document) {
    if (HasForeignCharacter(document)) return false;
    const QString proposal = document.GetPathName().empty()
                                 ? m_parts.frames.BaseTitle(document) + QStringLiteral(".kx")
                                 : ToQt(document.GetPathName());
    QFileDialog dialog(&m_parts.parent,
                       Translated(m_parts.translator, platform::Translatable("Zapisz jako")),
                       QString(), FileFilter(m_parts.translator));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QStringLiteral("kx"));
    dialog.selectFile(proposal);
    if (dialog.exec() != QDialog::Accepted || !IsOpen(document)) return false;
    const std::string path = FromQt(dialog.selectedFiles().value(0));
    const engine::CKalvexDoc* const other = m_parts.app.Documents().Find(path);
    if (other != nullptr && other != &document) {
        m_parts.ask(BoxKind::Message, Say(kIsOpen, {path}));
        return false;
    }
    return Write(document, path);
}

// False when it is still modified and is not to be given up.
bool ScriptFiles::AskToSave(engine::CKalvexDoc& document, bool& refused) {
    refused = false;
    if (!document.IsModified()) return true;
    const BoxAnswer answer =
        m_parts.ask(BoxKind::YesNoCancel, Say(kSaveChanges, {FromQt(NameOf(document))}));
    if (!IsOpen(document)) return true;
    if (answer == BoxAnswer::Yes) return Save(document);
    refused = answer == BoxAnswer::No;
    return refused;
}

bool ScriptFiles::Close(engine::CKalvexDoc& document) {
    bool refused = false;
    if (!AskToSave(document, refused)) return false;
    if (!IsOpen(document)) return true;
    if (refused) m_recovery.Drop(KeyOf(document));
    m_parts.app.CloseScript(document);
    return true;
}

bool ScriptFiles::SaveModified() {
    std::vector<std::string> refusedKeys;
    for (engine::CKalvexDoc* document : OpenScripts()) {
        bool refused = false;
        if (!IsOpen(*document)) continue;
        if (!AskToSave(*document, refused)) return false;
        if (refused) refusedKeys.push_back(KeyOf(*document));
    }
    for (const std::string& key : refusedKeys) {
        m_recovery.Drop(key);
        m_givenUp.insert(key);
    }
    return true;
}

bool ScriptFiles::PrepareStart(engine::CKalvexDoc& document) {
    if (!document.GetPathName().empty()) {
        return !document.IsModified() || !HasForeignCharacter(document);
    }
    const BoxAnswer answer =
        m_parts.ask(BoxKind::YesNo, Translated(m_parts.translator, kSaveForStart));
    return answer == BoxAnswer::Yes && IsOpen(document) && SaveAs(document);
}

// ---- what others do

void ScriptFiles::OnOpened(const engine::CKalvexDoc& document) {
    m_known[&document].opened = m_parts.clock.Now();
    OnInStep(document);
}

void ScriptFiles::OnInStep(const engine::CKalvexDoc& document) {
    if (!IsOpen(document)) return;
    Known& known = m_known[&document];
    const std::string path = platform::NativePath(document.GetPathName());
    known.stamp = StampOf(path);
    // Not the text of the document, which has other line ends and, in a run, what it includes.
    known.content.clear();
    std::string error;
    if (!document.GetPathName().empty()) platform::ReadWholeFile(path, known.content, error);
}

void ScriptFiles::OnSaved(engine::CKalvexDoc& document) {
    OnInStep(document);
    m_recovery.Drop(KeyOf(document));
    const std::string path = platform::NativePath(document.GetPathName());
    TellFault(m_snapshots.Keep(path, m_known[&document].content, m_parts.clock.Now()));
}

void ScriptFiles::OnClosing(const engine::CKalvexDoc& document) {
    m_known.erase(&document);
    std::erase_if(m_later, [&document](const auto* later) { return later == &document; });
}

ScriptFiles::FileStamp ScriptFiles::StampOf(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) return {};
    return {info.st_mtim.tv_sec, info.st_mtim.tv_nsec, info.st_size};
}

void ScriptFiles::CheckFiles() {
    if (std::exchange(m_checking, true)) return;
    for (engine::CKalvexDoc* open : OpenScripts()) {
        engine::CKalvexDoc& document = *open;
        if (!IsOpen(document) || document.GetPathName().empty()) continue;
        if (document.State().m_bRunning || document.State().m_bPaused) continue;
        Known& known = m_known[&document];
        const std::string path = platform::NativePath(document.GetPathName());
        const FileStamp stamp = StampOf(path);
        if (stamp.size < 0 || stamp == known.stamp) continue;
        known.stamp = stamp;
        std::string content;
        std::string error;
        if (!platform::ReadWholeFile(path, content, error) || content == known.content) continue;
        known.content = content;
        if (!document.IsModified() && IsTextOf(document, content)) continue;
        const BoxAnswer answer = m_parts.ask(
            BoxKind::YesNo, Say(platform::Translatable(
                                    "Plik %s został zmieniony na dysku. Czy wczytać go ponownie?"),
                                {document.GetPathName()}));
        if (answer != BoxAnswer::Yes || !IsOpen(document)) continue;
        document.ExpandIncludes(false);
        OnInStep(document);
        m_recovery.Drop(KeyOf(document));
        m_parts.frames.UpdateTitle(document);
    }
    m_checking = false;
}

}  // namespace kalvex::window
