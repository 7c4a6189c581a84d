// The actions that a person can take back and carry out again, as the editor's undo list groups
// them: what each is called, and which stand in the two lists. Main thread.
#pragma once

#include <string>
#include <vector>

#include "platform/Translator.h"

namespace kalvex::workbench {

enum UndoCode : unsigned {
    UndoUnknown = 0,
    UndoTyping = 0x100,
    UndoCut = 0x200,
    UndoPaste = 0x400,
    UndoDelete = 0x800,
    UndoDeleteCharacter = 0x1000,
    UndoDragAndDrop = 0x2000,
    UndoNewLine = 0x4000,
    UndoIndent = 0x8000,
    UndoUnindent = 0x10000,
    UndoTabulation = 0x20000,
    UndoReplace = 0x40000,
};

// By the code without its low 8 bits; engine text, never empty.
std::string DescribeUndo(unsigned code, const platform::Translator& translator);

enum class UndoDirection { Undo, Redo };

// The line below a list of which so many actions are selected; engine text.
std::string UndoCountText(UndoDirection direction, int count,
                          const platform::Translator& translator);

// Follows what the editor reports of its own list.
class UndoActions {
  public:
    void Done(unsigned code);  // nothing is left to be done again
    void Undone();
    void Redone();
    void Clear();
    void ClearRedo();

    // The newest first.
    std::vector<unsigned> List(UndoDirection direction) const;
    bool IsEmpty(UndoDirection direction) const;
    unsigned Newest(UndoDirection direction) const;  // of a list that is not empty

  private:
    std::vector<unsigned> m_undo;  // the newest last
    std::vector<unsigned> m_redo;
};

}  // namespace kalvex::workbench
