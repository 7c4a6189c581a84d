// Makes inputs out of others, mostly such that they keep the form of parcels. The same seed makes
// the same inputs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "fuzz/WireFields.h"

namespace kalvex::fuzz {

class Mutator {
  public:
    // At least one text; they outlive the mutator.
    Mutator(const std::vector<std::string>& corpus, std::uint64_t seed)
        : m_corpus(corpus), m_random(seed) {}

    std::string Next();

  private:
    std::size_t Below(std::size_t bound) { return m_random() % bound; }
    const std::string& Pick() { return m_corpus[Below(m_corpus.size())]; }

    void ChangeBytes(std::string& text);
    void ChangeFields(std::string& text);
    void ChangeContent(WireField& field);

    const std::vector<std::string>& m_corpus;
    std::mt19937_64 m_random;
};

}  // namespace kalvex::fuzz
