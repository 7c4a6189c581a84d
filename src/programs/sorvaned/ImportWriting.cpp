#include "programs/sorvaned/ImportWriting.h"

#include "text/CodePage.h"
#include "value/ArchiveValueList.h"
#include "vantrel/Codes.h"
#include "vantrel/OrderWords.h"

namespace kalvex::sorvaned {

namespace {

constexpr const char* kClient = "sorvaned import";
// Of one write of the archive.
constexpr std::size_t kValuesTogether = 5000;
constexpr std::size_t kBytesTogether = std::size_t{1} << 20;
// Writes that wait for their answers before more is made.
constexpr std::size_t kMostWaiting = 16;
constexpr std::size_t kMostReportsWaiting = 400;

constexpr const char* kRefused = platform::Translatable("%s: odmowa: %s (%s)");
constexpr const char* kNotWhole = platform::Translatable(
    "Import niedokończony; można go powtórzyć, to co zapisane pozostanie bez zmian");
constexpr const char* kNoTable = platform::Translatable("Plik tymczasowy: %s");

class ImportServer final : public CalledServer {
  public:
    explicit ImportServer(Caller& caller) : CalledServer(caller), m_caller(caller) {}

    bool HasFailed() const { return m_failed; }

  protected:
    void OnArchiveModifyError(const vantrel::RequestRecord& record) override {
        Fail(value::KindArchive, record.variable, record.result);
    }
    void OnReportModifyError(value::ValueKind kind, const vantrel::RequestRecord& record) override {
        Fail(kind, record.variable, record.result);
    }
    void OnOrderLost(const vantrel::LostOrder& order) override {
        Fail(order.kind, order.variable, vantrel::ResultServerFault);
    }

  private:
    void Fail(value::ValueKind kind, const std::string& variable, std::uint16_t result) {
        m_failed = true;
        const platform::Translator& translator = m_caller.GetTranslator();
        m_caller.Tell({kRefused,
                       {text::ToUtf8(variable), text::ToUtf8(vantrel::WriteWords(kind, translator)),
                        text::ToUtf8(vantrel::ResultWords(result, translator))}});
    }

    Caller& m_caller;
    bool m_failed = false;
};

class ImportWriting {
  public:
    ImportWriting(Caller& caller, ImportServer& server, const server::Definitions& definitions)
        : m_caller(caller), m_server(server), m_definitions(definitions) {}

    // False when there is no use in going on.
    bool Put(const SeriesKey& series, const value::CVal& value);
    bool Finish() { return Send() && Await(0); }

  private:
    bool Send();
    bool Await(std::size_t mostWaiting);
    const std::string& NameOf(const SeriesKey& series) const {
        return m_definitions.variables[static_cast<std::size_t>(series.variable)].name;
    }

    Caller& m_caller;
    ImportServer& m_server;
    const server::Definitions& m_definitions;
    SeriesKey m_series;  // of what has been put together
    value::CArchiveValueList m_values;
    std::size_t m_bytes = 0;
};

bool ImportWriting::Await(std::size_t mostWaiting) {
    return m_caller.Await([&] {
        const bool isUp = m_server.GetState() == vantrel::StateConnected;
        return m_server.HasFailed() || (isUp && m_server.WritesWaiting() <= mostWaiting);
    }) && !m_server.HasFailed();
}

bool ImportWriting::Put(const SeriesKey& series, const value::CVal& value) {
    const bool isFull = m_values.GetSize() >= kValuesTogether || m_bytes >= kBytesTogether;
    if ((isFull || series != m_series) && !Send()) return false;
    m_series = series;
    m_bytes += value.IsText() ? value.Text().size() : 0;
    m_values.Add(value);
    return true;
}

bool ImportWriting::Send() {
    const std::size_t count = m_values.GetSize();
    if (count == 0) return true;
    const std::string& name = NameOf(m_series);
    if (m_series.kind == value::KindArchive) {
        if (!Await(kMostWaiting)) return false;
        m_server.AddArchiveModifyRequest(name, m_values, m_values.Get(0)->GetTimeW(),
                                         m_values.Get(count - 1)->GetTimeW());
        m_server.MakeArchiveModifyRequest();
    } else {
        for (std::size_t index = 0; index < count; ++index) {
            if (!Await(kMostReportsWaiting)) return false;
            const value::CVal& value = *m_values.Get(index);
            m_server.AddReportModifyRequest(m_series.kind, name, value.GetTime(), value);
            m_server.MakeDataRequest(m_series.kind);
        }
    }
    m_values.RemoveAll();
    m_bytes = 0;
    return true;
}

}  // namespace

bool WriteImported(Caller& caller, ImportTable& table, const server::Definitions& definitions) {
    ImportServer server(caller);
    if (!caller.Enter(server, kClient, Breaks::WaitOut)) {
        if (caller.IsSignalled()) caller.Tell({kNotWhole});
        return false;
    }
    ImportWriting writing(caller, server, definitions);
    SeriesKey series;
    value::CVal value;
    bool any = true;
    bool good = true;
    while (good && any) {
        if (!table.Next(series, value, any)) {
            caller.Tell({kNoTable, {table.GetFault()}});
            return false;
        }
        good = !any || writing.Put(series, value);
    }
    if (good && writing.Finish()) return true;
    caller.Tell({kNotWhole});
    return false;
}

}  // namespace kalvex::sorvaned
