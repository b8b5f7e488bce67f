#pragma once

#include <QSlider>

namespace lomir {

// The zoom slider. Its value is a percentage with a fraction, as documents store it; the
// slider's position is the nearest whole percent. A value set from a document is kept
// exactly, so that saving writes back what was read.
class ZoomSlider final : public QSlider
{
    Q_OBJECT

public:
    explicit ZoomSlider(QWidget* parent = nullptr);

    double doubleValue() const { return m_value; }
    // Sets the value, within the slider's range, without reporting it.
    void setDoubleValue(double value);

Q_SIGNALS:
    // The user moved the slider.
    void doubleValueChanged(double value);

private:
    double m_value = 100.0;
    bool m_settingValue = false;
};

} // namespace lomir
