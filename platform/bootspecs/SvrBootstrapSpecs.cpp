#include "platform/bootspecs/SvrBootstrapSpecs.h"

#include <utility>

struct SvrBootstrapSpecs::Data {
  unsigned int _samples = 1000;
  double _levelPct = 95.0;
  unsigned int _method = 0;
  std::vector<std::uint32_t> _boundaries;
  std::vector<JackknifeEntry> _jackknife;

  bool operator==(const Data&) const = default;
};

SvrBootstrapSpecs::SvrBootstrapSpecs() : _my(std::make_unique<Data>()) {}
SvrBootstrapSpecs::SvrBootstrapSpecs(const SvrBootstrapSpecs& other)
    : _my(std::make_unique<Data>(*other._my)) {}
SvrBootstrapSpecs& SvrBootstrapSpecs::operator=(const SvrBootstrapSpecs& other) {
  if (this != &other) _my = std::make_unique<Data>(*other._my);
  return *this;
}
SvrBootstrapSpecs::~SvrBootstrapSpecs() = default;

unsigned int SvrBootstrapSpecs::GetNSamples() const { return _my->_samples; }
void SvrBootstrapSpecs::SetNSamples(unsigned int samples) { _my->_samples = samples; }
double SvrBootstrapSpecs::GetCILevelPct() const { return _my->_levelPct; }
void SvrBootstrapSpecs::SetCILevelPct(double level) { _my->_levelPct = level; }
unsigned int SvrBootstrapSpecs::GetSamplingMethod() const { return _my->_method; }
void SvrBootstrapSpecs::SetSamplingMethod(unsigned int method) { _my->_method = method; }

const std::vector<std::uint32_t>& SvrBootstrapSpecs::GetJackknifeBoundaries() const {
  return _my->_boundaries;
}
void SvrBootstrapSpecs::SetJackknifeBoundaries(std::vector<std::uint32_t> boundaries) {
  _my->_boundaries = std::move(boundaries);
}
const std::vector<SvrBootstrapSpecs::JackknifeEntry>& SvrBootstrapSpecs::GetJackknifeList() const {
  return _my->_jackknife;
}
void SvrBootstrapSpecs::SetJackknifeList(std::vector<JackknifeEntry> entries) {
  _my->_jackknife = std::move(entries);
}

bool SvrBootstrapSpecs::operator==(const SvrBootstrapSpecs& other) const {
  return *_my == *other._my;
}
