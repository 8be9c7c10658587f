#include "platform/linux/atspi/roles.h"

#include <iterator>

namespace quil::linux_platform {
namespace {

struct Row {
    /// The constant's name in atspi-constants.h, without its prefix ATSPI_ROLE_.
    std::string_view name;
    std::string_view role;
    std::string_view subrole;
};

/// By the role's number.
constexpr Row kRoles[] = {
    // clang-format off
    {"INVALID", "AXUnknown", {}},
    {"ACCELERATOR_LABEL", "AXStaticText", {}},
    {"ALERT", "AXWindow", "AXDialog"},
    {"ANIMATION", "AXImage", {}},
    {"ARROW", "AXImage", {}},
    {"CALENDAR", "AXGroup", {}},
    {"CANVAS", "AXGroup", {}},
    {"CHECK_BOX", "AXCheckBox", {}},
    {"CHECK_MENU_ITEM", "AXMenuItem", {}},
    {"COLOR_CHOOSER", "AXColorWell", {}},
    {"COLUMN_HEADER", "AXCell", {}},
    {"COMBO_BOX", "AXPopUpButton", {}},
    {"DATE_EDITOR", "AXDateField", {}},
    {"DESKTOP_ICON", "AXImage", {}},
    {"DESKTOP_FRAME", "AXGroup", {}},
    {"DIAL", "AXSlider", {}},
    {"DIALOG", "AXWindow", "AXDialog"},
    {"DIRECTORY_PANE", "AXBrowser", {}},
    {"DRAWING_AREA", "AXGroup", {}},
    {"FILE_CHOOSER", "AXWindow", "AXDialog"},
    {"FILLER", "AXGroup", {}},
    {"FOCUS_TRAVERSABLE", "AXUnknown", {}},
    {"FONT_CHOOSER", "AXWindow", "AXDialog"},
    {"FRAME", "AXWindow", "AXStandardWindow"},
    {"GLASS_PANE", "AXGroup", {}},
    {"HTML_CONTAINER", "AXGroup", {}},
    {"ICON", "AXImage", {}},
    {"IMAGE", "AXImage", {}},
    {"INTERNAL_FRAME", "AXGroup", {}},
    {"LABEL", "AXStaticText", {}},
    {"LAYERED_PANE", "AXGroup", {}},
    {"LIST", "AXList", {}},
    {"LIST_ITEM", "AXGroup", {}},
    {"MENU", "AXMenu", {}},
    {"MENU_BAR", "AXMenuBar", {}},
    {"MENU_ITEM", "AXMenuItem", {}},
    {"OPTION_PANE", "AXGroup", {}},
    {"PAGE_TAB", "AXRadioButton", "AXTabButton"},
    {"PAGE_TAB_LIST", "AXTabGroup", {}},
    {"PANEL", "AXGroup", {}},
    {"PASSWORD_TEXT", "AXTextField", "AXSecureTextField"},
    {"POPUP_MENU", "AXMenu", {}},
    {"PROGRESS_BAR", "AXProgressIndicator", {}},
    {"PUSH_BUTTON", "AXButton", {}},
    {"RADIO_BUTTON", "AXRadioButton", {}},
    {"RADIO_MENU_ITEM", "AXMenuItem", {}},
    {"ROOT_PANE", "AXGroup", {}},
    {"ROW_HEADER", "AXCell", {}},
    {"SCROLL_BAR", "AXScrollBar", {}},
    {"SCROLL_PANE", "AXScrollArea", {}},
    {"SEPARATOR", "AXSplitter", {}},
    {"SLIDER", "AXSlider", {}},
    {"SPIN_BUTTON", "AXIncrementor", {}},
    {"SPLIT_PANE", "AXSplitGroup", {}},
    {"STATUS_BAR", "AXGroup", "AXApplicationStatus"},
    {"TABLE", "AXTable", {}},
    {"TABLE_CELL", "AXCell", {}},
    {"TABLE_COLUMN_HEADER", "AXCell", {}},
    {"TABLE_ROW_HEADER", "AXCell", {}},
    {"TEAROFF_MENU_ITEM", "AXMenuItem", {}},
    {"TERMINAL", "AXTextArea", {}},
    {"TEXT", "AXTextField", {}},
    {"TOGGLE_BUTTON", "AXCheckBox", "AXToggle"},
    {"TOOL_BAR", "AXToolbar", {}},
    {"TOOL_TIP", "AXHelpTag", {}},
    {"TREE", "AXOutline", {}},
    {"TREE_TABLE", "AXOutline", {}},
    {"UNKNOWN", "AXUnknown", {}},
    {"VIEWPORT", "AXGroup", {}},
    {"WINDOW", "AXWindow", {}},
    {"EXTENDED", "AXUnknown", {}},
    {"HEADER", "AXGroup", {}},
    {"FOOTER", "AXGroup", {}},
    {"PARAGRAPH", "AXGroup", {}},
    {"RULER", "AXRuler", {}},
    {"APPLICATION", "AXApplication", {}},
    {"AUTOCOMPLETE", "AXList", {}},
    {"EDITBAR", "AXTextField", {}},
    {"EMBEDDED", "AXGroup", {}},
    {"ENTRY", "AXTextField", {}},
    {"CHART", "AXImage", {}},
    {"CAPTION", "AXGroup", {}},
    {"DOCUMENT_FRAME", "AXGroup", {}},
    {"HEADING", "AXHeading", {}},
    {"PAGE", "AXGroup", {}},
    {"SECTION", "AXGroup", {}},
    {"REDUNDANT_OBJECT", "AXUnknown", {}},
    {"FORM", "AXGroup", {}},
    {"LINK", "AXLink", {}},
    {"INPUT_METHOD_WINDOW", "AXWindow", "AXSystemFloatingWindow"},
    {"TABLE_ROW", "AXRow", "AXTableRow"},
    {"TREE_ITEM", "AXRow", "AXOutlineRow"},
    {"DOCUMENT_SPREADSHEET", "AXGroup", {}},
    {"DOCUMENT_PRESENTATION", "AXGroup", {}},
    {"DOCUMENT_TEXT", "AXGroup", {}},
    {"DOCUMENT_WEB", "AXWebArea", {}},
    {"DOCUMENT_EMAIL", "AXGroup", {}},
    {"COMMENT", "AXGroup", {}},
    {"LIST_BOX", "AXList", {}},
    {"GROUPING", "AXGroup", {}},
    {"IMAGE_MAP", "AXGroup", {}},
    {"NOTIFICATION", "AXGroup", "AXApplicationAlert"},
    {"INFO_BAR", "AXGroup", "AXApplicationStatus"},
    {"LEVEL_BAR", "AXLevelIndicator", {}},
    {"TITLE_BAR", "AXGroup", {}},
    {"BLOCK_QUOTE", "AXGroup", {}},
    {"AUDIO", "AXGroup", "AXAudio"},
    {"VIDEO", "AXGroup", "AXVideo"},
    {"DEFINITION", "AXGroup", "AXDefinition"},
    {"ARTICLE", "AXGroup", "AXDocumentArticle"},
    {"LANDMARK", "AXGroup", "AXLandmarkRegion"},
    {"LOG", "AXGroup", "AXApplicationLog"},
    {"MARQUEE", "AXGroup", "AXApplicationMarquee"},
    {"MATH", "AXGroup", "AXDocumentMath"},
    {"RATING", "AXRatingIndicator", {}},
    {"TIMER", "AXGroup", "AXApplicationTimer"},
    {"STATIC", "AXStaticText", {}},
    {"MATH_FRACTION", "AXGroup", {}},
    {"MATH_ROOT", "AXGroup", {}},
    {"SUBSCRIPT", "AXGroup", "AXSubscriptStyleGroup"},
    {"SUPERSCRIPT", "AXGroup", "AXSuperscriptStyleGroup"},
    {"DESCRIPTION_LIST", "AXList", "AXDescriptionList"},
    {"DESCRIPTION_TERM", "AXGroup", "AXTerm"},
    {"DESCRIPTION_VALUE", "AXGroup", "AXDescription"},
    {"FOOTNOTE", "AXGroup", {}},
    {"CONTENT_DELETION", "AXGroup", "AXDeleteStyleGroup"},
    {"CONTENT_INSERTION", "AXGroup", "AXInsertStyleGroup"},
    {"MARK", "AXGroup", {}},
    {"SUGGESTION", "AXGroup", {}},
    {"PUSH_BUTTON_MENU", "AXMenuButton", {}},
    // clang-format on
};
static_assert(std::size(kRoles) == 130);

bool isText(AtspiRole role) {
    return role == AtspiRole::text || role == AtspiRole::entry;
}

}  // namespace

bool isTextField(AtspiRole role) {
    switch (role) {
        case AtspiRole::editbar:
        case AtspiRole::entry:
        case AtspiRole::passwordText:
        case AtspiRole::terminal:
        case AtspiRole::text:
            return true;
        default:
            return false;
    }
}

ProtocolRole protocolRole(AtspiRole role, const RoleContext& context) {
    if (role == AtspiRole::alert && !context.isChildOfApplication) {
        return {"AXGroup", "AXApplicationAlert"};
    }
    // GTK 4's own dialogs.
    if (role == AtspiRole::filler && context.isChildOfApplication) return {"AXWindow", "AXDialog"};
    if (role == AtspiRole::comboBox && context.hasEditableText) return {"AXComboBox", {}};
    if (role == AtspiRole::menu && context.isChildOfMenuBar) return {"AXMenuBarItem", {}};
    if (isText(role) && context.isMultiLine) return {"AXTextArea", {}};
    const auto number = static_cast<std::size_t>(role);
    if (number >= std::size(kRoles)) return {"AXUnknown", {}};
    return {kRoles[number].role, kRoles[number].subrole};
}

}  // namespace quil::linux_platform
