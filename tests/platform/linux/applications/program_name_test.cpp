#include "platform/linux/applications/program_name.h"

#include <gtest/gtest.h>

#include <iterator>
#include <sstream>

namespace quil::linux_platform {
namespace {

TEST(ProgramOf, IsWhatReallyRuns) {
    // The words of each command line, "_" for a space within one.
    const struct {
        std::string line, program;
    } cases[] = {
        {"/usr/bin/xterm -e python3 x.py", "/usr/bin/xterm"},
        {"python3.11 -W ignore -X dev -Wonce /opt/tool.py --fast", "/opt/tool.py"},
        {"/usr/bin/python3 -Bm idlelib.idle", "idlelib.idle"},
        {"python3 -Bc import_gi calculator", ""},
        {"python3", ""},
        {"java -Xmx1m -cp calculator:/usr/share/java/x.jar --add-opens a/b=c org.Main x",
         "org.Main"},
        {"java -classpath calculator -jar /usr/share/app.jar", "/usr/share/app.jar"},
        {"java -p /opt -m app/org.Main", "app/org.Main"},
        {"java -cp calculator", ""},
        {"bash --rcfile x -o pipefail +O extglob ./run.sh", "./run.sh"},
        {"sh -ec exec_gimp_%U x", "gimp"},
        {"sh -c cd_/opt;_./gimp", ""},
        {"sh /usr/bin/python", "/usr/bin/python"},
        {"env -i -u A B=python3 C=2 python3 tool.py", "tool.py"},
        {"env -- galculator", "galculator"},
        {"nice -n 5 ionice -c 3 nohup gedit", "gedit"},
        {"perl -I lib -Mre=debug -w tool.pl", "tool.pl"},
        {"perl -lne print x", ""},
        {"node -r esm --import x app.js", "app.js"},
        {"lua -l x -e y app.lua", "app.lua"},
        {"flatpak run --branch=stable --command edit org.gnome.gedit @@u", "org.gnome.gedit"},
        {"flatpak list", ""},
        {"snap run code", "code"},
        {"wine C:\\App\\app.exe", "C:\\App\\app.exe"},
        {"", ""},
    };
    for (const auto& [line, program] : cases) {
        std::istringstream stream(line);
        std::vector<std::string> words{std::istream_iterator<std::string>(stream), {}};
        for (std::string& word : words) {
            for (char& letter : word) letter = letter == '_' ? ' ' : letter;
        }
        EXPECT_EQ(programOf(words), program) << line;
    }
}

}  // namespace
}  // namespace quil::linux_platform
