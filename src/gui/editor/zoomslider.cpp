#include "gui/editor/zoomslider.h"

#include <algorithm>
#include <cmath>

namespace lomir {

ZoomSlider::ZoomSlider(QWidget* parent) : QSlider(Qt::Horizontal, parent)
{
    connect(this, &QSlider::valueChanged, this, [this](int position) {
        if (m_settingValue)
            return;
        m_value = position;
        Q_EMIT doubleValueChanged(m_value);
    });
}

void ZoomSlider::setDoubleValue(double value)
{
    m_value = std::clamp(value, double(minimum()), double(maximum()));
    m_settingValue = true;
    setValue(int(std::lround(m_value)));
    m_settingValue = false;
}

} // namespace lomir
