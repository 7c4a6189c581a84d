// A folder that appears with all that is in it or not at all. Main thread.
#pragma once

#include <string>

namespace kalvex::platform {

class NewFolder {
  public:
    explicit NewFolder(std::string path);
    // What was not put in place is gone; of a process that was killed ".NAME.XXXXXX" stays beside.
    ~NewFolder();
    NewFolder(const NewFolder&) = delete;
    NewFolder& operator=(const NewFolder&) = delete;

    // These are done one after the other. False with the system's words in `error`, such as when
    // something bears the folder's name; nothing that was there is changed then.
    bool Begin(std::string& error);
    bool Commit(std::string& error);

    // Where the files go between the two; for its owner alone.
    const std::string& Making() const { return m_making; }

    // Makes folders down to that of the file, which is named from the folder on, for the owner
    // alone.
    bool MakeFolderOf(const std::string& file, std::string& error) const;

  private:
    const std::string m_path;
    std::string m_making;  // empty: nothing to remove
};

}  // namespace kalvex::platform
