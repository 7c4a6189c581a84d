// The scripts as files: opened, saved and closed by the person, with the questions that go with it;
// files that others change meanwhile; versions that are kept, and copies of what is not saved.
// Main thread. Whoever calls holds the documents (ScriptDocuments::Hold), since a document may be
// closed by a module or a console while a question is open.
#pragma once

#include <QString>
#include <QStringList>
#include <QWidget>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "app/KalvexApp.h"
#include "platform/Clock.h"
#include "workbench/model/RecoveryStore.h"
#include "workbench/model/SnapshotStore.h"
#include "workbench/qt/Boxes.h"
#include "workbench/qt/LookSettings.h"
#include "workbench/qt/ScriptFrames.h"

namespace kalvex::window {

// Of the dialogs that choose scripts.
QString FileFilter(const platform::Translator& translator);

class ScriptFiles {
  public:
    using Ask = std::function<BoxAnswer(BoxKind kind, const QString& text)>;

    struct Parts {
        QWidget& parent;
        const platform::Translator& translator;
        const platform::Clock& clock;
        app::CKalvexApp& app;
        ScriptFrames& frames;
        LookSettings& look;
        Ask ask;
        std::string recoveryFolder;
    };

    explicit ScriptFiles(Parts parts);

    // ---- by the person
    void New();
    void OpenByDialog();
    // Those that do not open are told one by one, and the others open; true when it did.
    bool Open(const QString& path);
    void OpenAll(const QStringList& paths);
    bool Save(engine::CKalvexDoc& document);
    bool SaveAs(engine::CKalvexDoc& document);
    // False when the person wants to keep it, or was not asked because nothing can be saved.
    bool Close(engine::CKalvexDoc& document);
    // Of every script that is modified; false when the person wants to go on instead.
    bool SaveModified();
    // A script that is modified and can be saved may be started, which asks for it; one without a
    // file is saved first; false when that was refused.
    bool PrepareStart(engine::CKalvexDoc& document);
    void ShowHistory(engine::CKalvexDoc& document);

    // ---- from elsewhere
    // The text of a document is that of its file: it has been opened, saved or reset.
    void OnOpened(const engine::CKalvexDoc& document);
    void OnInStep(const engine::CKalvexDoc& document);
    // The text has been written to the file: its copy goes, and it is a version.
    void OnSaved(engine::CKalvexDoc& document);
    void OnClosing(const engine::CKalvexDoc& document);
    // The window has got the focus: files that others have changed are asked about, once.
    void CheckFiles();
    // Writes copies of what is not saved; at most every few seconds.
    void KeepCopies(bool all = false);
    // Offers what was not saved when the last process ended; what could not be taken then, later.
    void OfferCopies();
    void OfferLater();

  private:
    struct FileStamp {
        std::int64_t seconds = 0;
        std::int64_t nanoseconds = 0;
        std::int64_t size = -1;

        bool operator==(const FileStamp&) const = default;
    };
    struct Known {
        FileStamp stamp;
        std::string content;  // of the file, as it was read or written last
        std::int64_t opened = 0;
    };

    bool AskToSave(engine::CKalvexDoc& document, bool& refused);
    bool Write(engine::CKalvexDoc& document, const std::string& path);
    bool HasForeignCharacter(engine::CKalvexDoc& document);
    bool IsOpen(const engine::CKalvexDoc& document) const;
    // As they are now; any of them may go while a question is open.
    std::vector<engine::CKalvexDoc*> OpenScripts() const;
    std::string KeyOf(const engine::CKalvexDoc& document) const;
    QString NameOf(const engine::CKalvexDoc& document) const;
    void OfferCopy(engine::CKalvexDoc& document);
    void PutText(engine::CKalvexDoc& document, const std::string& text);
    void TellFault(const platform::Notice& notice);
    static FileStamp StampOf(const std::string& path);
    QString Say(const char* polish, std::initializer_list<std::string_view> values) const;

    const Parts m_parts;
    workbench::SnapshotStore m_snapshots;
    workbench::RecoveryStore m_recovery;
    std::map<const engine::CKalvexDoc*, Known> m_known;
    std::set<std::string> m_givenUp;        // keys of texts that the person does not want
    std::set<engine::CKalvexDoc*> m_later;  // to be offered their copies
    bool m_checking = false;
};

}  // namespace kalvex::window
