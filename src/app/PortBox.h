#pragma once

#include <QString>

#include <string>

class QComboBox;
class QWidget;

namespace kelvox {

class Program;

/// A box of ports that sets the setting: those of the system by their readable names, and any path
/// that is typed.
[[nodiscard]] QComboBox* makePortBox(Program& program, const std::string& key, QWidget* parent);
/// Lists the ports as the system has them now, and shows the chosen one.
void fillPorts(QComboBox* box, const std::string& chosen);

} // namespace kelvox
