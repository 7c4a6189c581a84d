#include "server/Health.h"

#include "platform/FigureText.h"

namespace kalvex::server {

namespace {

using Samples = std::vector<platform::FigureSample>;

struct FigureRow {
    platform::FigureForm form;
    Samples (*samples)(const ServerFigures& figures);
};

template <class Number>
Samples Single(Number value) {
    return {{"", "", "", static_cast<double>(value)}};
}

constexpr double kMilli = 1000;
constexpr double kPerMega = 1e-6;
constexpr double kPerMicro = 1e-6;

Samples Clients(const ServerFigures& figures) {
    return {{"", "state=\"login\"", platform::Translatable("zalogowani"),
             static_cast<double>(figures.clients)},
            {"", "state=\"stranger\"", platform::Translatable("przed logowaniem"),
             static_cast<double>(figures.strangers)}};
}

Samples Commits(const ServerFigures& figures) {
    const platform::DurationCounts& commits = figures.store.commits;
    const auto seconds = [](std::int64_t microseconds) {
        return static_cast<double>(microseconds) * kPerMicro;
    };
    return {{"", "quantile=\"0.5\"", "50%", seconds(commits.GetPercentile(0.5))},
            {"", "quantile=\"0.99\"", "99%", seconds(commits.GetPercentile(0.99))},
            {"_sum", "", nullptr, seconds(commits.GetSum())},
            {"_count", "", nullptr, static_cast<double>(commits.GetCount())}};
}

constexpr FigureRow kFigures[] = {
    {{"sorvaned_uptime_seconds",
      "gauge",
      "Time since the start.",
      {platform::Translatable("czas pracy"), 1, 0, " s"}},
     [](const ServerFigures& f) { return Single(f.uptime); }},
    {{"sorvaned_clients",
      "gauge",
      "Conversations by state.",
      {platform::Translatable("klienci"), 1, 0, ""}},
     Clients},
    {{"sorvaned_variables",
      "gauge",
      "Variables that are defined.",
      {platform::Translatable("zmienne"), 1, 0, ""}},
     [](const ServerFigures& f) { return Single(f.variables); }},
    {{"sorvaned_subscriptions",
      "gauge",
      "Subscribed variables of all clients.",
      {platform::Translatable("subskrypcje"), 1, 0, ""}},
     [](const ServerFigures& f) { return Single(f.subscriptions); }},
    {{"sorvaned_operations_waiting",
      "gauge",
      "Operations that wait to be written to the store.",
      {platform::Translatable("operacje czekające na zapis"), 1, 0, ""}},
     [](const ServerFigures& f) { return Single(f.store.waiting); }},
    {{"sorvaned_operations_stored_total",
      "counter",
      "Operations written to the store since the start.",
      {platform::Translatable("zapisane operacje"), 1, 0, ""}},
     [](const ServerFigures& f) { return Single(f.store.stored); }},
    {{"sorvaned_transactions_repeated_total",
      "counter",
      "Transactions of the store that failed and were tried again.",
      {platform::Translatable("powtórzone transakcje"), 1, 0, ""}},
     [](const ServerFigures& f) { return Single(f.store.repeated); }},
    {{"sorvaned_operations_lost_total",
      "counter",
      "Archive values for which the store had no room.",
      {platform::Translatable("utracone wartości"), 1, 0, ""}},
     [](const ServerFigures& f) { return Single(f.lost); }},
    {{"sorvaned_commit_seconds",
      "summary",
      "How long a transaction of the store takes, since the start.",
      {platform::Translatable("czas transakcji"), kMilli, 2, " ms"}},
     Commits},
    {{"sorvaned_store_bytes",
      "gauge",
      "Size of the store on its disk.",
      {platform::Translatable("plik danych"), kPerMega, 1, " MB"}},
     [](const ServerFigures& f) { return Single(f.storeBytes); }},
    {{"sorvaned_disk_free_bytes",
      "gauge",
      "Free space on the disk of the store.",
      {platform::Translatable("wolne miejsce na dysku danych"), kPerMega, 1, " MB"}},
     [](const ServerFigures& f) { return f.freeBytes ? Single(*f.freeBytes) : Samples(); }},
    {{"process_resident_memory_bytes",
      "gauge",
      "Physical memory that the process occupies.",
      {platform::Translatable("pamięć procesu"), kPerMega, 1, " MB"}},
     [](const ServerFigures& f) { return Single(f.memory); }},
};

}  // namespace

std::vector<std::string> FormatHealthLines(const ServerFigures& figures,
                                           const platform::Translator& translator) {
    const std::string beginning = translator.Translate("Stan serwera, ");
    std::vector<std::string> lines;
    for (const FigureRow& row : kFigures) {
        const Samples samples = row.samples(figures);
        if (samples.empty()) continue;
        lines.push_back(beginning + platform::FigureLine(row.form, samples, translator));
    }
    return lines;
}

std::string FormatHealthMetrics(const ServerFigures& figures) {
    std::string text;
    for (const FigureRow& row : kFigures) {
        const Samples samples = row.samples(figures);
        if (!samples.empty()) text += platform::FigureMetric(row.form, samples);
    }
    return text;
}

}  // namespace kalvex::server
