#pragma once

#include <QString>
#include <QWidget>

#include <string>

namespace kelvox {

/// One of the window's panels: opened from the rail over the chart, or torn off to float or dock.
class SidePanel : public QWidget {
    Q_OBJECT
public:
    /// @param name stays the same for ever: the place is remembered under it
    /// @param titleKey text key of the heading
    /// @param icon name of its line icon
    SidePanel(QString name, std::string titleKey, QString icon, QWidget* parent = nullptr)
        : QWidget(parent)
        , m_name(std::move(name))
        , m_titleKey(std::move(titleKey))
        , m_icon(std::move(icon))
    {
        setObjectName(m_name);
    }
    [[nodiscard]] const QString& name() const { return m_name; }
    [[nodiscard]] const std::string& titleKey() const { return m_titleKey; }
    [[nodiscard]] const QString& icon() const { return m_icon; }
    /// The width it likes beside the rail, in pixels of the design.
    [[nodiscard]] virtual int preferredWidth() const { return 360; }
    /// The scheme or the interface scale changed: icons are to be made anew.
    virtual void restyle() { }

private:
    QString m_name;
    std::string m_titleKey;
    QString m_icon;
};

} // namespace kelvox
