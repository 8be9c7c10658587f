// One of each widget of Swing, for tests of what elements say and do. Each line of standard output
// is what has changed: {"widget": value}.
import java.awt.*;
import javax.swing.*;
import javax.swing.event.*;
import javax.swing.plaf.basic.BasicButtonUI;
import javax.swing.plaf.basic.BasicMenuItemUI;
import javax.swing.tree.*;

public class Gallery {
    static void report(String widget, Object value) {
        System.out.println("{\"" + widget + "\": "
                           + (value instanceof String ? "\"" + value + "\"" : value) + "}");
    }

    static JComponent row(JComponent... parts) {
        JPanel row = new JPanel();
        for (JComponent part : parts) row.add(part);
        return row;
    }

    static <T extends JComponent> T named(T part, String name) {
        part.getAccessibleContext().setAccessibleName(name);
        return part;
    }

    static AbstractButton told(AbstractButton button, String widget) {
        button.addActionListener(e -> report(widget, button.isSelected()));
        return button;
    }

    static JButton button(String label, Runnable action) {
        JButton button = new JButton(label);
        button.addActionListener(e -> action.run());
        return button;
    }

    /** A button with a colour that is nowhere else. */
    static JButton probe(String label, String widget, String colour, Runnable action) {
        JButton button = button(label, () -> { report(widget, true); action.run(); });
        button.setUI(new BasicButtonUI());
        button.setBackground(Color.decode(colour));
        button.setBorder(BorderFactory.createEmptyBorder(6, 12, 6, 12));
        button.setFocusPainted(false);
        return button;
    }

    static void openDialog(JFrame frame) {
        JDialog dialog = new JDialog(frame, "Dialog");
        dialog.getContentPane().setLayout(new FlowLayout());
        dialog.add(probe("Done", "dialog", "#10e070", dialog::dispose));
        dialog.setSize(300, 100);
        dialog.setLocationRelativeTo(frame);
        dialog.setVisible(true);
    }

    public static void main(String[] arguments) {
        SwingUtilities.invokeLater(Gallery::show);
    }

    static void show() {
        JFrame frame = new JFrame("Gallery");
        Box box = Box.createVerticalBox();
        JButton push = probe("Push", "push", "#e01070", () -> {});
        JPopupMenu popover = new JPopupMenu();
        popover.add(probe("Apple", "popover", "#e0a010", () -> popover.setVisible(false)));
        JButton popoverOpener = button("Popover", () -> popover.show(box, 60, 80));
        box.add(row(button("Dialog", () -> openDialog(frame)), popoverOpener));
        box.add(row(push, told(new JToggleButton("Toggle"), "toggle"),
                    told(new JCheckBox("Check"), "check")));
        AbstractButton one = told(new JRadioButton("One"), "one");
        JRadioButton two = new JRadioButton("Two", true);
        ButtonGroup group = new ButtonGroup();
        group.add(one);
        group.add(two);
        String[] fruit = {"Apple", "Pear", "Plum"};
        JComboBox<String> combo = named(new JComboBox<>(fruit), "Fruit");
        combo.setSelectedIndex(1);
        combo.addPopupMenuListener(new PopupMenuListener() {
            public void popupMenuWillBecomeVisible(PopupMenuEvent e) { report("combo", true); }
            public void popupMenuWillBecomeInvisible(PopupMenuEvent e) {}
            public void popupMenuCanceled(PopupMenuEvent e) {}
        });
        JComboBox<String> editable = named(new JComboBox<>(fruit), "Editable");
        editable.setEditable(true);
        editable.setSelectedIndex(1);
        box.add(row(one, two, combo, editable));
        JSpinner spin = named(new JSpinner(new SpinnerNumberModel(25, 0, 100, 1)), "Spin");
        spin.addChangeListener(e -> report("spin", spin.getValue()));
        JSlider slider = named(new JSlider(0, 100, 25), "Slide");
        slider.addChangeListener(e -> report("slider", slider.getValue()));
        JProgressBar progress = named(new JProgressBar(0, 100), "Progress");
        progress.setValue(40);
        box.add(row(spin, slider, progress));
        JTextField entry = named(new JTextField("entry text"), "Entry");
        entry.getDocument().addDocumentListener(new DocumentListener() {
            public void insertUpdate(DocumentEvent e) { report("entry", entry.getText()); }
            public void removeUpdate(DocumentEvent e) {}
            public void changedUpdate(DocumentEvent e) {}
        });
        box.add(row(entry, named(new JPasswordField("secret"), "Secret"),
                    new JLabel("Label text")));
        JTextArea area = named(new JTextArea("first line\nsecond line\n"), "Area");
        for (int i = 0; i < 100; ++i) area.append("line\n");
        JTabbedPane tabs = new JTabbedPane();
        tabs.addTab("First", new JLabel("First page"));
        tabs.addTab("Second", new JLabel("Second page"));
        tabs.addChangeListener(e -> report("tab", tabs.getSelectedIndex()));
        box.add(tabs);
        JScrollPane scrolled = new JScrollPane(area);
        scrolled.setPreferredSize(new Dimension(200, 100));
        scrolled.getVerticalScrollBar().addAdjustmentListener(e -> report("scrolled", e.getValue()));
        JTable table = new JTable(new Object[][] {{"cell0_0", 0}, {"cell1_0", 1}},
                                  new Object[] {"Text", "Number"});
        JScrollPane tableScrolled = new JScrollPane(table);
        tableScrolled.setPreferredSize(new Dimension(150, 80));
        DefaultMutableTreeNode root = new DefaultMutableTreeNode("root");
        root.add(new DefaultMutableTreeNode("below"));
        box.add(row(scrolled, tableScrolled, new JTree(root),
                    new JList<>(new String[] {"Item one", "Item two"})));
        JMenu file = new JMenu("Menu");
        JMenuItem open = new JMenuItem("Open");
        open.setUI(new BasicMenuItemUI() {
            protected void paintMenuItem(Graphics g, JComponent c, Icon check, Icon arrow, Color background,
                                         Color foreground, int gap) {
                g.setColor(Color.decode("#7010e0"));
                g.fillRect(0, 0, c.getWidth(), c.getHeight());
            }
        });
        open.setPreferredSize(new Dimension(160, 30));
        open.addActionListener(e -> report("open", true));
        file.add(open);
        JMenuBar bar = new JMenuBar();
        bar.add(file);
        frame.setJMenuBar(bar);
        frame.add(box);
        frame.setDefaultCloseOperation(JFrame.EXIT_ON_CLOSE);
        frame.setSize(700, 600);
        frame.setVisible(true);
    }
}
