// Takes away from a scenario what its difference does not need.
#include <algorithm>
#include <functional>
#include <utility>

#include "differential/Lockstep.h"

namespace kalvex::differential {

namespace {

class Minimiser {
  public:
    Minimiser(const support::ScratchFolder& folder, Scenario scenario, const Tables& counted)
        : m_folder(folder), m_counted(counted), m_best(std::move(scenario)) {}

    Scenario Run() {
        for (bool smaller = true; smaller;) {
            smaller = Shorten();
            for (std::size_t i = 0; i < m_best.scripts.size(); ++i) {
                smaller |= TakeLinesAway([i](Scenario& s) -> std::string& { return s.scripts[i]; });
            }
            smaller |= TakeLinesAway([](Scenario& s) -> std::string& { return s.included; });
            smaller |= TakeEventsAway();
            smaller |= TakeSettingsAway();
        }
        return m_best;
    }

  private:
    bool Try(const Scenario& scenario) {
        const Verdict verdict = RunBothWays(m_folder, scenario, m_counted);
        if (verdict.difference.empty()) return false;
        m_best = scenario;
        m_best.ticks = std::min(m_best.ticks, verdict.tick);
        return true;
    }

    bool TryWith(const std::function<void(Scenario&)>& change) {
        Scenario scenario = m_best;
        change(scenario);
        return Try(scenario);
    }

    bool Shorten() {
        const int ticks = m_best.ticks;
        const std::size_t events = m_best.events.size();
        TryWith([](Scenario& s) {
            std::erase_if(s.events, [&s](const Event& event) { return event.tick > s.ticks; });
        });
        return m_best.ticks < ticks || m_best.events.size() < events;
    }

    static std::vector<std::string> Split(const std::string& text) {
        std::vector<std::string> lines(1);
        for (const char c : text) {
            if (c == '\n') {
                lines.emplace_back();
            } else {
                lines.back() += c;
            }
        }
        return lines;
    }

    static std::string Join(const std::vector<std::string>& lines) {
        std::string text;
        for (const std::string& line : lines) text += line + '\n';
        if (!text.empty()) text.pop_back();
        return text;
    }

    template <class TextOf>
    bool TakeLinesAway(TextOf textOf) {
        if (textOf(m_best).empty()) return false;
        bool smaller = false;
        std::vector<std::string> lines = Split(textOf(m_best));
        for (std::size_t size = lines.size(); size > 0; size /= 2) {
            for (std::size_t first = 0; first < lines.size();) {
                std::vector<std::string> fewer = lines;
                const std::size_t last = std::min(first + size, lines.size());
                fewer.erase(fewer.begin() + static_cast<std::ptrdiff_t>(first),
                            fewer.begin() + static_cast<std::ptrdiff_t>(last));
                if (TryWith([&](Scenario& s) { textOf(s) = Join(fewer); })) {
                    lines = std::move(fewer);
                    smaller = true;
                } else {
                    first += size;
                }
            }
        }
        return smaller;
    }

    bool TakeEventsAway() {
        bool smaller = false;
        for (std::size_t i = m_best.events.size(); i-- > 0;) {
            smaller |= TryWith([i](Scenario& s) {
                s.events.erase(s.events.begin() + static_cast<std::ptrdiff_t>(i));
            });
        }
        return smaller;
    }

    bool TakeSettingsAway() {
        bool smaller = false;
        for (bool Scenario::*setting :
             {&Scenario::sources, &Scenario::stepwise, &Scenario::watched, &Scenario::published}) {
            if (!(m_best.*setting)) continue;
            smaller |= TryWith([setting](Scenario& s) { s.*setting = false; });
        }
        if (m_best.tickLengths.size() > 1) {
            smaller |= TryWith([](Scenario& s) { s.tickLengths = {1}; });
        }
        if (m_best.scripts.size() > 1) {
            smaller |= TryWith([](Scenario& s) { s.scripts.pop_back(); });
        }
        return smaller;
    }

    const support::ScratchFolder& m_folder;
    const Tables& m_counted;
    Scenario m_best;
};

}  // namespace

Scenario Minimise(const support::ScratchFolder& folder, Scenario scenario, const Tables& counted) {
    return Minimiser(folder, std::move(scenario), counted).Run();
}

}  // namespace kalvex::differential
