// One of each control of Qt Quick, for tests of what elements say and do (both Qt 5 and Qt 6).
import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15

ApplicationWindow {
    title: "Gallery"
    width: 500
    height: 700
    visible: true

    function tell(widget, value) { reporter.report(widget, JSON.stringify(value)) }

    menuBar: MenuBar {
        Menu {
            title: "File"
            onAboutToShow: tell("menu", true)
            MenuItem { text: "Open"; onTriggered: tell("open", true) }
        }
    }
    ColumnLayout {
        RowLayout {
            Button { text: "Push"; onClicked: tell("push", true) }
            Button { text: "Toggle"; checkable: true; onCheckedChanged: tell("toggle", checked) }
            CheckBox { text: "Check"; onCheckedChanged: tell("check", checked) }
            Switch { text: "Switch"; onCheckedChanged: tell("switch", checked) }
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
