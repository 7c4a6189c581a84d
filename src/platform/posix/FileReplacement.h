// One replacement of a file, and of its backup, by new content. A descriptor of the new file is
// locked from the beginning to the end, so that of several processes one at a time comes through.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <string_view>

#include "platform/posix/Descriptor.h"

namespace kalvex::platform {

class FileReplacement {
  public:
    // No backup is kept where its path is empty. `mode` is for a file that is not there before.
    FileReplacement(const std::string& path, const std::string& backup, mode_t mode = 0666);
    // Nothing but file and backup is left.
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    // These are done one after the other as long as they answer true; before the last one has done
    // so, and after any that has not, file and backup are as they were.
    bool Begin();
    bool ReadOld();
    bool Write(std::string_view content);
    bool Commit();

    // The file's content, or where there is no file the backup's. After ReadOld.
    const std::string& Old() const { return m_old; }

  private:
    enum class BackupStep { None, Added, Exchanged, Overwritten };

    bool OpenNew();
    bool OpenFolders();
    bool IsUnchanged() const;
    bool MakeBackup();
    bool ReplaceBackup();
    bool PutInPlace();
    bool SyncFolders() const;
    void TakeBack();
    void ClearAside() const;

    std::string m_target;  // the path, and after Begin the file itself where that is a link
    std::string m_newPath;
    std::string m_oldPath;  // the former file
    const mode_t m_mode;
    const std::string m_backup;
    const std::string m_backupAside;   // the former file, then a backup that changed places with it
    const std::string m_backupFormer;  // a backup that was overwritten
    std::optional<struct stat> m_replaced;
    std::string m_old;
    Descriptor m_new{-1};
    Descriptor m_folder{-1};
    Descriptor m_backupFolder{-1};  // where it is another one
    BackupStep m_backupStep = BackupStep::None;
    bool m_ownsAside = false;
    bool m_placed = false;
};

}  // namespace kalvex::platform
