import java.io.BufferedReader;
import java.io.InputStreamReader;
import javax.swing.JFrame;
import javax.swing.JTextArea;
import javax.swing.SwingUtilities;

/** What window_app.py is in other toolkits, with the titles "one" and "two". */
class FieldsApp {
    private static final JTextArea[] areas = new JTextArea[2];

    private static String texts() {
        return "[\"" + areas[0].getText() + "\", \"" + areas[1].getText() + "\"]";
    }

    private static void answer(String line) {
        if (line.equals("clear")) {
            for (JTextArea area : areas) area.setText("");
        }
        System.out.println(line.equals("clear") ? "null" : texts());
    }

    public static void main(String[] arguments) throws Exception {
        SwingUtilities.invokeAndWait(() -> {
            String[] titles = {"one", "two"};
            for (int i = 0; i < 2; ++i) {
                JFrame frame = new JFrame(titles[i]);
                areas[i] = new JTextArea();
                frame.add(areas[i]);
                frame.setSize(400, 300);
                frame.setVisible(true);
            }
        });
        BufferedReader input = new BufferedReader(new InputStreamReader(System.in));
        for (String line; (line = input.readLine()) != null; ) {
            String command = line;
            SwingUtilities.invokeAndWait(() -> answer(command));
        }
        System.exit(0);
    }
}
