// Script variables: one wide interface for the four kinds, so that statements and evaluators never
// ask what they have. A variable belongs to one script and lives for one run of it.
// Main thread. No operation raises a script error but the lookup inside a pointer.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "operands/ElementSequence.h"
#include "value/ArchiveValueList.h"
#include "value/Status.h"
#include "value/Value.h"

namespace kalvex::sources {
class CInterfaceObj;
}  // namespace kalvex::sources

namespace kalvex::operands {

class ScriptContext;

enum VariableKind : int {
    VariableNone = 0,
    VariableLocal = 1,
    VariablePointer = 2,
    VariableList = 3,
    VariableRemote = 4
};

// How GetValue reads a value whether the script may use it or not.
inline constexpr int kAsStored = 1;

// Answers of GetValue.
enum ReadResult : int {
    ReadNothing = 0,      // no value, or the source of a remote variable is not connected
    ReadValue = 1,        // `out` holds a value
    ReadUnavailable = 2,  // remote only: connected, and no usable value is there
};

// Times are seconds since 1970 GMT. An operation that a class does not support answers 0 or an
// empty text, which is a defined answer and no failure.
class CVariable {
  public:
    explicit CVariable(std::string_view name) : m_name(name) {}
    virtual ~CVariable() = default;
    CVariable(const CVariable&) = delete;
    CVariable& operator=(const CVariable&) = delete;

    virtual VariableKind GetKind() const { return VariableNone; }
    const std::string& GetName() const { return m_name; }

    // mode 0 refuses a value that the script may not use; kAsStored reads whatever is stored.
    virtual int GetValue(value::CVal& out, value::ValueKind kind, int mode);
    // What GetValue with mode 0 would copy, where it stands, until the variable changes. Null where
    // that has to be asked: it would not answer ReadValue, or the value is held elsewhere.
    virtual const value::CVal* PeekValue(value::ValueKind kind);
    virtual int SetValue(const value::CVal& value, value::ValueKind kind);
    virtual int GetValueType(value::ValueKind kind, int mode);  // Unreadable when it cannot be read
    virtual int GetStatus(std::uint16_t* out, value::ValueKind kind);
    virtual int SetStatus(std::uint16_t word, value::ValueKind kind);
    virtual int GetTime(std::int64_t* out, value::ValueKind kind);
    virtual int SetTime(std::int64_t time, value::ValueKind kind);
    virtual int CopyFrom(CVariable* source, value::ValueKind kind);
    virtual int GetNameValueText(std::string& out, value::ValueKind kind);  // "name:value"
    virtual int SetValueText(std::string_view text, value::ValueKind kind);
    virtual int IsReportLoaded(value::ValueKind kind);
    virtual int IsReportInited(value::ValueKind kind);
    virtual int RequestRange(value::ValueKind kind, std::int64_t from, std::int64_t to);
    virtual std::int64_t GetRequestStart();
    virtual std::int64_t GetRequestEnd();
    virtual int IsReady(value::ValueKind kind);
    virtual int PutValue(value::ValueKind kind, std::int64_t time, const value::CVal& value,
                         bool send);
    virtual int FlushPuts(value::CArchiveValueList& list);
    virtual int InitLoad(value::ValueKind kind, std::int64_t time);
    virtual int InitLoadRefresh(value::ValueKind kind, std::int64_t time);
    virtual int InitReport(value::ValueKind kind, std::int64_t time);
    virtual int InitCalc(value::ValueKind kind, std::int64_t time);
    virtual int SetLocked(bool flag);
    virtual int SetIgnoreUnknown(bool flag);
    virtual sources::CInterfaceObj* GetSourceRecord();
    virtual int IsArchived();
    virtual int HasHourReport();
    virtual int HasDayReport();
    virtual int HasMonthReport();
    virtual int HasSpanReport();
    virtual std::string GetDescription();
    virtual std::string GetDescName();
    virtual std::string GetUnit();
    virtual std::string GetDispFormat();
    virtual std::string GetMinVal();
    virtual std::string GetMaxVal();

  private:
    std::string m_name;
};

// What local and list variables share: the derived operations written on GetValue and SetValue
// alone, and answers of 1 to whatever would address a server.
class VariableStored : public CVariable {
  public:
    using CVariable::CVariable;

    int GetValueType(value::ValueKind kind, int mode) override;
    int GetStatus(std::uint16_t* out, value::ValueKind kind) override;
    int SetStatus(std::uint16_t word, value::ValueKind kind) override;
    int GetTime(std::int64_t* out, value::ValueKind kind) override;
    int SetTime(std::int64_t time, value::ValueKind kind) override;
    int CopyFrom(CVariable* source, value::ValueKind kind) override;
    int GetNameValueText(std::string& out, value::ValueKind kind) override;
    int SetValueText(std::string_view text,
                     value::ValueKind kind) override;  // always the current value
    int IsReportLoaded(value::ValueKind kind) override;
    int IsReportInited(value::ValueKind kind) override;
    int RequestRange(value::ValueKind kind, std::int64_t from, std::int64_t to) override;
    int IsReady(value::ValueKind kind) override;
    int PutValue(value::ValueKind kind, std::int64_t time, const value::CVal& value,
                 bool send) override;
    int InitLoad(value::ValueKind kind, std::int64_t time) override;
    int InitLoadRefresh(value::ValueKind kind, std::int64_t time) override;
    int InitReport(value::ValueKind kind, std::int64_t time) override;
    int InitCalc(value::ValueKind kind, std::int64_t time) override;
    int SetLocked(bool flag) override;
};

// Holds its values itself, so what is asked of one needs no copy of it.
class VariableHeld : public VariableStored {
  public:
    using VariableStored::VariableStored;

    int GetValueType(value::ValueKind kind, int mode) override;
    int GetStatus(std::uint16_t* out, value::ValueKind kind) override;
    int GetTime(std::int64_t* out, value::ValueKind kind) override;

  private:
    // What GetValue reads as stored; null where there is nothing.
    virtual const value::CVal* FindStored(value::ValueKind kind) const = 0;
};

// Five values of its own, for the kinds 1 to 5; each is readable whatever its status.
class CVariableLocal final : public VariableHeld {
  public:
    using VariableHeld::VariableHeld;

    VariableKind GetKind() const override { return VariableLocal; }
    int GetValue(value::CVal& out, value::ValueKind kind, int mode) override;
    const value::CVal* PeekValue(value::ValueKind kind) override { return FindStored(kind); }
    int SetValue(const value::CVal& value,
                 value::ValueKind kind) override;  // for KindHour: stored, and answers 0
    // The value of the kind where it is kept, to be read and set; null for another kind.
    value::CVal* At(value::ValueKind kind) {
        return HasKind(kind) ? &m_values[kind - value::KindCurrent] : nullptr;
    }

  private:
    static bool HasKind(value::ValueKind kind) {
        return kind >= value::KindCurrent && kind <= value::KindSpan;
    }
    const value::CVal* FindStored(value::ValueKind kind) const override {
        return HasKind(kind) ? &m_values[kind - value::KindCurrent] : nullptr;
    }

    value::CVal m_values[5];
};

// Values in order with an iterator; the element under the iterator is the list's value.
class CVariableList final : public VariableHeld {
  public:
    using VariableHeld::VariableHeld;

    VariableKind GetKind() const override { return VariableList; }
    int GetValue(value::CVal& out, value::ValueKind kind, int mode) override;
    const value::CVal* PeekValue(value::ValueKind kind) override;
    int SetValue(const value::CVal& value, value::ValueKind kind) override;

    void Add(const value::CVal& value) { m_elements.Append(value); }
    int Insert(int index,
               const value::CVal& value);  // 0 for a negative index, which inserts nothing
    void MoveFirst() { m_iterator = 0; }
    void MoveNext();  // no bound
    void MoveTo(std::int32_t index) { m_iterator = index; }
    bool IsIteratorValid() const;
    std::int32_t GetIterator() const { return m_iterator; }
    void RemoveCurrent();
    void RemoveAll();
    const ElementSequence& Elements() const { return m_elements; }

  private:
    const value::CVal* FindStored(value::ValueKind kind) const override;

    ElementSequence m_elements;
    std::int32_t m_iterator = -1;
};

// Stands for another variable by name, or for what another pointer stands for; names are looked up
// at each use and every operation is passed on. A missing target, and pointers that lead back to
// themselves, give the base answers.
class CVariablePointer final : public CVariable {
  public:
    CVariablePointer(std::string_view name, ScriptContext& script)
        : CVariable(name), m_script(script) {}

    VariableKind GetKind() const override { return VariablePointer; }
    const std::string& GetTargetName() const { return m_target; }
    void SetTargetName(std::string_view name) { m_target = name; }
    VariableKind GetTargetKind();
    // What this pointer, or the last of a row of them, stands for; null where that is not there,
    // which is no error here.
    CVariable* LookUpTarget() const;

    int GetValue(value::CVal& out, value::ValueKind kind, int mode) override;
    const value::CVal* PeekValue(value::ValueKind kind) override;
    int SetValue(const value::CVal& value, value::ValueKind kind) override;
    int GetValueType(value::ValueKind kind, int mode) override;
    int GetStatus(std::uint16_t* out, value::ValueKind kind) override;
    int SetStatus(std::uint16_t word, value::ValueKind kind) override;
    int GetTime(std::int64_t* out, value::ValueKind kind) override;
    int SetTime(std::int64_t time, value::ValueKind kind) override;
    int CopyFrom(CVariable* source, value::ValueKind kind) override;
    int GetNameValueText(std::string& out, value::ValueKind kind) override;
    int SetValueText(std::string_view text, value::ValueKind kind) override;
    int IsReportLoaded(value::ValueKind kind) override;
    int IsReportInited(value::ValueKind kind) override;
    int RequestRange(value::ValueKind kind, std::int64_t from, std::int64_t to) override;
    std::int64_t GetRequestStart() override;
    std::int64_t GetRequestEnd() override;
    int IsReady(value::ValueKind kind) override;
    int PutValue(value::ValueKind kind, std::int64_t time, const value::CVal& value,
                 bool send) override;
    int FlushPuts(value::CArchiveValueList& list) override;
    int InitLoad(value::ValueKind kind, std::int64_t time) override;
    int InitLoadRefresh(value::ValueKind kind, std::int64_t time) override;
    int InitReport(value::ValueKind kind, std::int64_t time) override;
    int InitCalc(value::ValueKind kind, std::int64_t time) override;
    int SetLocked(bool flag) override;
    int SetIgnoreUnknown(bool flag) override;
    sources::CInterfaceObj* GetSourceRecord() override;
    int IsArchived() override;
    int HasHourReport() override;
    int HasDayReport() override;
    int HasMonthReport() override;
    int HasSpanReport() override;
    std::string GetDescription() override;
    std::string GetDescName() override;
    std::string GetUnit() override;
    std::string GetDispFormat() override;
    std::string GetMinVal() override;
    std::string GetMaxVal() override;

  private:
    template <class Result, class... Parameters, class... Arguments>
    Result Forward(Result missing, Result (CVariable::*operation)(Parameters...),
                   Arguments&&... arguments);

    template <class LookUp>
    CVariable* Follow(LookUp lookUp) const;
    CVariable* FindTarget() const;

    ScriptContext& m_script;
    std::string m_target;
};

// The variables of one script in order of declaration, found by exact name. Owns them.
class VariableTable {
  public:
    CVariable* Find(std::string_view name) const;
    CVariable& Append(std::unique_ptr<CVariable> variable);  // its name must not be there yet
    void RemoveAll();
    std::size_t GetSize() const { return m_arrVariables.size(); }
    // Another number than before whenever a name may have come to mean another variable or none:
    // what Find answered stands as long as this does.
    std::uint32_t Generation() const { return m_generation; }
    auto begin() const { return m_arrVariables.begin(); }
    auto end() const { return m_arrVariables.end(); }

  private:
    std::uint32_t m_generation = 0;
    std::vector<std::unique_ptr<CVariable>> m_arrVariables;
    std::unordered_map<std::string_view, CVariable*> m_byName;  // keys live in the variables
};

// The name without its suffix: cut at the first dot that does not stand at position 0.
std::string_view BaseName(std::string_view name);

// The variable of that name, its suffix left aside; null with script error 3 (not forced)
// otherwise.
CVariable* FindVariable(ScriptContext& script, std::string_view name);

// Status and time of the value that a name with suffix means; false when there is none (for the
// time also when it is negative).
bool GetVariableStatus(ScriptContext& script, std::string_view name, std::uint16_t* out);
bool GetVariableTime(ScriptContext& script, std::string_view name, std::int64_t* out);

}  // namespace kalvex::operands
