#include "cli/Checks.h"

#include <QString>

namespace cli {

CLI::Validator wholeNumber()
{
    const auto check = [](std::string &text) -> std::string {
        bool isNumber = false;
        const qlonglong number = QString::fromStdString(text).toLongLong(&isNumber);
        if (!isNumber)
            return "\"" + text + "\" is no whole number of 64 bits";
        text = std::to_string(number);
        return {};
    };
    return {check, ""};
}

CLI::Validator notEmpty()
{
    const auto check = [](std::string &text) -> std::string {
        return text.empty() ? "it is empty" : "";
    };
    return {check, ""};
}

} // namespace cli
