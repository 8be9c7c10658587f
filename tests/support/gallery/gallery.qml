// One of each control of Qt Quick, for tests of what elements say and do (both Qt 5 and Qt 6).
import QtQuick 2.15
import QtQuick.Window 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15

ApplicationWindow {
    id: root
    title: "Gallery"
    width: 500
    height: 700
    visible: true

    function tell(widget, value) { reporter.report(widget, JSON.stringify(value)) }

    menuBar: MenuBar {
        Menu {
            title: "Menu"
            onAboutToShow: tell("menu", true)
            MenuItem { text: "Open"; onTriggered: tell("open", true); background: Rectangle { color: "#7010e0" } }
        }
    }
    Window {
        id: dialog
        title: "Dialog"
        transientParent: root
        width: 300
        height: 100
        Button {
            x: 30
            y: 20
            text: "Done"
            background: Rectangle { color: "#10e070" }
            onClicked: { tell("dialog", true); dialog.close() }
        }
    }
    Popup {
        id: popover
        x: 150
        y: 150
        focus: true
        Button {
            text: "Apple"
            background: Rectangle { color: "#e0a010" }
            onClicked: { tell("popover", true); popover.close() }
        }
    }
    ColumnLayout {
        RowLayout {
            Button { text: "Push"; onClicked: tell("push", true); background: Rectangle { color: "#e01070" } }
            Button { text: "Toggle"; checkable: true; onCheckedChanged: tell("toggle", checked) }
            CheckBox { text: "Check"; onCheckedChanged: tell("check", checked) }
            Switch { text: "Switch"; onCheckedChanged: tell("switch", checked) }
        }
        RowLayout {
            Button { text: "Dialog"; onClicked: dialog.show() }
            Button { text: "Popover"; onClicked: popover.open() }
        }
        RowLayout {
            RadioButton { text: "One"; onCheckedChanged: tell("one", checked) }
            RadioButton { text: "Two"; checked: true }
            ComboBox { model: ["Apple", "Pear", "Plum"]; currentIndex: 1; Accessible.name: "Fruit" }
        }
        RowLayout {
            SpinBox { value: 25; onValueChanged: tell("spin", value) }
            Slider { from: 0; to: 100; value: 25; onValueChanged: tell("slider", value) }
            ProgressBar { value: 0.4 }
        }
        RowLayout {
            TextField { text: "entry text"; onTextChanged: tell("entry", text) }
            TextField { text: "secret"; echoMode: TextInput.Password }
        }
        TabBar {
            onCurrentIndexChanged: tell("tab", currentIndex)
            TabButton { text: "First"; width: 100 }
            TabButton { text: "Second"; width: 100 }
        }
        TextArea { text: "first line\nsecond line" }
        Label { text: "Label text" }
        Text { text: '<a href="x">Link</a>'; onLinkActivated: tell("link", true) }
        ScrollView {
            Layout.preferredHeight: 100
            ListView {
                model: 40
                delegate: ItemDelegate { text: "Item " + index; onClicked: tell("item", index) }
            }
        }
    }
}
