#include "core/base/units.h"

namespace lomir {

std::optional<Metric> metricFromRawValue(qint64 rawValue)
{
    switch (rawValue) {
    case qint64(Metric::millimetres):
        return Metric::millimetres;
    case qint64(Metric::inches):
        return Metric::inches;
    default:
        return std::nullopt;
    }
}

double conversionFactor(Metric metric)
{
    return metric == Metric::inches ? kPointToInchesConversionFactor
                                    : kPointToMillimetersConversionFactor;
}

} // namespace lomir
