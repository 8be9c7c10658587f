#pragma once

#include <cstdint>
#include <string_view>

namespace quil::linux_platform {

/// Roles of the accessibility bus, by number (AtspiRole, atspi-constants.h); those that the code
/// treats specially have names here.
enum class AtspiRole : std::uint32_t {
    alert = 2,
    checkBox = 7,
    checkMenuItem = 8,
    columnHeader = 10,
    comboBox = 11,
    filler = 20,
    label = 29,
    listItem = 32,
    menu = 33,
    menuBar = 34,
    menuItem = 35,
    pageTab = 37,
    panel = 39,
    passwordText = 40,
    popupMenu = 41,
    pushButton = 43,
    radioButton = 44,
    radioMenuItem = 45,
    rootPane = 46,
    rowHeader = 47,
    scrollBar = 48,
    scrollPane = 49,
    separator = 50,
    spinButton = 52,
    tableCell = 56,
    tableColumnHeader = 57,
    tableRowHeader = 58,
    tearoffMenuItem = 59,
    terminal = 60,
    text = 61,
    toggleButton = 62,
    application = 75,
    editbar = 77,
    entry = 79,
    documentFrame = 82,
    link = 88,
    treeItem = 91,
    documentSpreadsheet = 92,
    documentPresentation = 93,
    documentText = 94,
    documentWeb = 95,
    documentEmail = 96,
    staticText = 116,
    pushButtonMenu = 129,
};

/// Whether it is a field for text of its own, as its role says.
bool isTextField(AtspiRole role);

/// What else decides about the role that an element has for a host.
struct RoleContext {
    bool isChildOfApplication = false;
    bool isChildOfMenuBar = false;
    /// It has a child that is an editable text field.
    bool hasEditableText = false;
    bool isMultiLine = false;
};

struct ProtocolRole {
    std::string_view role;
    /// Empty when there is none.
    std::string_view subrole;
};

/// The role for hosts. A role that is not known is "AXUnknown".
ProtocolRole protocolRole(AtspiRole role, const RoleContext& context);

}  // namespace quil::linux_platform
