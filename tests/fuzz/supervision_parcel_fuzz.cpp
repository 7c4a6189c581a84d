// The questions about a module and their answers: what has been decoded comes out of its bytes
// again, and those bytes no longer change.
#include "fuzz/fuzz.h"
#include "supervision/SupervisionParcels.h"
#include "text/CodePage.h"

namespace kalvex::fuzz {

namespace {

std::vector<std::string> Parcels(const std::string& parcel) {
    return {parcel};
}
std::vector<std::string> Parcels(const std::vector<std::string>& parcels) {
    return parcels;
}

template <class Content>
void Check(std::string_view bytes) {
    Content content;
    if (!supervision::Unpack(bytes, content)) return;
    for (const std::string& parcel : Parcels(supervision::Pack(content))) {
        Content again;
        Demand(supervision::Unpack(parcel, again), "a piece does not decode");
        Demand(Parcels(supervision::Pack(again)) == Parcels(parcel), "a piece changes on its way");
    }
}

}  // namespace

std::vector<std::string> FuzzCorpus() {
    const std::string words = text::FromUtf8("zażółć gęślą jaźń");
    engine::ScriptStanding standing;
    standing.line = 7;
    standing.text = words;
    standing.state = engine::StandingState::Waiting;
    standing.missing = {
        {"A.HREP", value::KindHour, {"Gaz", words, engine::DataState::Down, "powód"}}};
    standing.error.code = 15;
    app::ScriptStatus script;
    script.path = "a.kx";
    script.line = 7;
    script.standing = standing;
    const app::ModuleStatus status{"Kalvex", "Kalvex_stacja", 2, {script}};
    const supervision::AuditPiece audit{
        {{1710025200, {audit::AuditAction::Value, "a.kx", "adam", "", words, "A", "1", "2"}}},
        3,
        {"audit.log (Permission denied)"}};
    std::vector<std::string> corpus{
        "",
        supervision::Pack(supervision::Question{"JAN", words, "Konsola", "a.kx", -5}),
        supervision::Pack(std::vector<int>{2, 7}),
        supervision::Pack(standing),
        supervision::Pack(audit),
    };
    for (std::string& parcel : supervision::Pack(supervision::StatusPiece{status, {"b.kx"}, true}))
        corpus.push_back(std::move(parcel));
    return corpus;
}

}  // namespace kalvex::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes = kalvex::fuzz::Bytes(data, size);
    kalvex::fuzz::Check<kalvex::supervision::Question>(bytes);
    kalvex::fuzz::Check<kalvex::supervision::StatusPiece>(bytes);
    kalvex::fuzz::Check<std::vector<int>>(bytes);
    kalvex::fuzz::Check<kalvex::engine::ScriptStanding>(bytes);
    kalvex::fuzz::Check<kalvex::supervision::AuditPiece>(bytes);
    return 0;
}
