// The bootstrap specifications of a bootstrapped procedure: sample count, confidence level,
// sampling method and the jackknife lists. The end of a procedure deserializes them from the
// IPC_END_PROCEDURE text; the bootstrap pooler and its calculator read them.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

class SvrBootstrapSpecs {
public:
  // One jackknife sample: its weight in the BCa acceleration and the group (stratum) it lies in.
  struct JackknifeEntry {
    double value = 0.0;
    std::uint32_t group = 0;
    bool operator==(const JackknifeEntry&) const = default;
  };

  // 1000 samples, a 95% confidence level, simple sampling (method 0), no jackknife.
  SvrBootstrapSpecs();
  SvrBootstrapSpecs(const SvrBootstrapSpecs& other);
  SvrBootstrapSpecs& operator=(const SvrBootstrapSpecs& other);
  ~SvrBootstrapSpecs();

  // The number of bootstrap samples B (bootstrap split categories 1 .. B).
  unsigned int GetNSamples() const;
  void SetNSamples(unsigned int samples);
  // The confidence level in percent (95 for a 95% interval).
  double GetCILevelPct() const;
  void SetCILevelPct(double level);
  // 0 simple, 1 stratified, 2 residual, 3 wild.
  unsigned int GetSamplingMethod() const;
  void SetSamplingMethod(unsigned int method);

  // Bootstrap split category numbers that end the jackknife ranges, read by the replicate
  // collector.
  const std::vector<std::uint32_t>& GetJackknifeBoundaries() const;
  void SetJackknifeBoundaries(std::vector<std::uint32_t> boundaries);
  // The jackknife list; its length is the jackknife sample count.
  const std::vector<JackknifeEntry>& GetJackknifeList() const;
  void SetJackknifeList(std::vector<JackknifeEntry> entries);

  bool operator==(const SvrBootstrapSpecs& other) const;

private:
  struct Data;
  std::unique_ptr<Data> _my;
};
