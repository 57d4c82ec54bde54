#include "backend/omfactory/pooling/BootstrapCellCalculator.h"

#include <optional>
#include <utility>

#include "backend/omfactory/pooling/OmBootCalculator.h"
#include "backend/omfactory/pooling/OmPoolingTools.h"
#include "platform/bootstats/MCBSStdErrorBias.h"
#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmNumber.h"

struct BootstrapCellCalculator::Data {
  Data(const SvrBootstrapSpecs& specs, const OmPivotTable& source,
       std::unique_ptr<BootstrapResultWriter> writer, int splitDim, std::vector<int> requiredDims,
       const ReplicateValues* values)
      : _jackknifeList(&specs.GetJackknifeList()),
        _source(&source),
        _writer(std::move(writer)),
        _splitDim(splitDim),
        _collector(source, splitDim, specs.GetNSamples(), unsigned(specs.GetJackknifeList().size()),
                   specs.GetJackknifeBoundaries(),
                   std::move(requiredDims), values),
        _levelPct(specs.GetCILevelPct()),
        _sampleCount(specs.GetNSamples()) {}

  const OmBootCalculator::JackknifeList* _jackknifeList;
  const OmPivotTable* _source;
  std::unique_ptr<BootstrapResultWriter> _writer;
  int _splitDim;
  ReplicateCollector _collector;
  double _levelPct;
  unsigned _sampleCount;
};

BootstrapCellCalculator::BootstrapCellCalculator(const SvrBootstrapSpecs& specs,
                                                 const OmPivotTable& source,
                                                 std::unique_ptr<BootstrapResultWriter> writer,
                                                 int splitDim, std::vector<int> requiredDims,
                                                 const ReplicateValues* values) {
  if (!writer) throw OMSException("BootstrapCellCalculator::BootstrapCellCalculator -- writer != null");
  _my = std::make_unique<Data>(specs, source, std::move(writer), splitDim, std::move(requiredDims),
                               values);
}

BootstrapCellCalculator::~BootstrapCellCalculator() = default;

ReplicateCollector& BootstrapCellCalculator::Collector() { return _my->_collector; }

BootstrapResultWriter& BootstrapCellCalculator::Writer() { return *_my->_writer; }

void BootstrapCellCalculator::ComputeCell(const OmPivotTable::Coordinates& estimate,
                                          const OmPivotTable::Coordinates& stdError,
                                          bool zeroFill) {
  OmNumber scratch(0.0);
  if (OmPoolingTools::ReadNumber(*_my->_source, estimate, scratch) == nullptr) return;
  if (!_my->_collector.Collect(estimate, stdError)) return;
  ComputeCollected(estimate, zeroFill);
}

void BootstrapCellCalculator::ComputeCollected(const OmPivotTable::Coordinates& target,
                                               bool zeroFill) {
  Data& my = *_my;
  ReplicateCollector& collected = my._collector;
  std::vector<double>& replicates = collected.Replicates();
  const std::size_t gathered = replicates.size();
  // A statistic that some samples could not produce (a count of zero) is counted as 0 there.
  if (zeroFill && replicates.size() < my._sampleCount) replicates.resize(my._sampleCount, 0.0);
  // The gathering accumulated the replicates' moments beside other statistics' (much faster);
  // the zeros filled in continue them.
  std::optional<MCBSStdErrorBias> moments;
  if (const auto& m = collected.ReplicateMoments(); m && m->count == gathered) {
    moments.emplace(m->count, m->mean, m->sumSquares);
    moments->AddBootstrapStats(replicates.data() + gathered, replicates.size() - gathered);
  }

  const OmBootCalculator calculator(replicates, collected.ReplicateStdErrors(),
                                    collected.JackknifeValues(), *my._jackknifeList,
                                    collected.JackknifeStart(), collected.JackknifeEnd(),
                                    collected.Estimate(), collected.EstimateStdError(),
                                    moments ? &*moments : nullptr);
  const auto [lower, upper] = calculator.ConfidenceInterval(my._levelPct);
  const double significance = calculator.Significance(2, 0.0);
  const bool boundMissing = lower == OmNumber::kSysMiss || upper == OmNumber::kSysMiss;
  my._writer->Write(target, unsigned(replicates.size()), collected.JackknifeComplete(),
                    calculator.Bias(), calculator.StandardError(), significance, lower, upper,
                    boundMissing ? calculator.SamplesForCoverage(my._levelPct) : 0);
}
