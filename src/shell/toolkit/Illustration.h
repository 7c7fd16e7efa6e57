// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QSize>
#include <QWidget>

namespace ostrelle {

/// A drawing in resources/illustrations, in the colours of the current theme. The files use the light theme's
/// colours, so that any viewer shows them; other colours stay as they are.
class Illustration : public QWidget {
    Q_OBJECT

public:
    /// `path` is that of an SVG file or resource.
    explicit Illustration(const QString& path, QWidget* parent = nullptr);

    /// A drawing in resources/illustrations, by its name there.
    static Illustration* named(const QString& name);

    /// True when there is no such file, or it is not a drawing.
    bool isMissing() const { return m_size.isEmpty(); }

    /// The drawing's own size, in device-independent pixels.
    QSize sizeHint() const override { return m_size; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QByteArray m_drawing;
    QSize m_size;
};

} // namespace ostrelle
