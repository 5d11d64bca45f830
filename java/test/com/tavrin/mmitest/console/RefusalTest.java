package com.tavrin.mmitest.console;

import static org.junit.jupiter.api.Assertions.assertEquals;

import java.io.ByteArrayOutputStream;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;

import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

/**
 * Command lines the console refuses before it loads anything: one line on stderr, exit 2, nothing
 * on stdout. A line accepted by mistake would go on to load the library, which these tests do not
 * have, and fail with another code. Service names need the device's catalogue: the end-to-end
 * tests refuse those.
 */
class RefusalTest {
    @TempDir
    static Path dir;

    @ParameterizedTest(name = "{0}")
    @CsvSource(delimiter = '|', value = {
        "run --absent power --start-delay power=3000 | mmi run: --absent power and --start-delay power=3000 contradict",
        "run --drill light --no-drill | mmi run: --drill and --no-drill contradict each other; give one",
        "run --drill-fault crash --no-drill | mmi run: --drill-fault and --no-drill contradict",
        "run --start-delay power=1 --start-delay power=2 | mmi run: --start-delay power is given twice",
        "run --answer power.getPowerState=1 --answer power.getPowerState=2 | mmi run: --answer power.getPowerState is "
            + "given twice; give one answer per operation",
        "call --answer light.setLight=0 --answer=light.setLight=crash getBsnNative | mmi call: --answer light.setLight "
            + "is given twice",
        "call --json --list-ops power | mmi call: --list-ops prints a list, not JSON, so --json has no effect",
        "run --absent display --only-1.0 display | mmi run: --absent display and --only-1.0 display contradict",
        "run --junit - | mmi run: --junit -: the results go to a file (standard output shows the table)",
        "run --json DIR/nodir/x.json | mmi run: --json DIR/nodir/x.json: folder DIR/nodir does not exist",
        "run --junit= | mmi run: --junit needs a file name",
        "run --step , | mmi run: --step ',': an empty item; give numbers from --list such as 2-5,9",
        "run --step 1, | mmi run: --step '1,': an empty item",
        "run --step ,1 | mmi run: --step ',1': an empty item",
        "run --step 1 --step 1-2,,3 | mmi run: --step '1-2,,3': an empty item",
        "run --step 5-2 | mmi run: --step 5-2: a range runs from the lower number up",
        "run --step 2-99 | mmi run: --step 99: the steps are numbered 1 to 54",
        "run --step 2-5 -k Light | mmi run: no step matches -k Light among --step 2-5",
        "run --dril power | mmi run: unknown option --dril (did you mean --drill?)",
        "rnu | mmi: unknown command rnu (did you mean run?)",
        "run -- --list | mmi run: unexpected argument --list (after --, every word is an argument)",
        "call -- --help | mmi call: unexpected argument --help (after --, every word is an argument)",
        "call getPowerStateNative --x | mmi call: unknown option --x (an argument that begins with - goes after --: mmi",
        "call getBsnNativ | mmi call: no native method getBsnNativ (did you mean getBsnNative?)",
        "call GetBsnNative | mmi call: no native method GetBsnNative (did you mean getBsnNative?)",
        "call xyzzy | mmi call: no native method xyzzy (./mmi call --help lists them)",
        "call getBsnNative --jsn | mmi call: unknown option --jsn (did you mean --json?)",
        "call --list-ops power display | mmi call: --list-ops takes one service and calls no method, so 'display'"})
    void refusedWithOneLine(String line, String message) {
        ByteArrayOutputStream out = new ByteArrayOutputStream();
        ByteArrayOutputStream err = new ByteArrayOutputStream();
        int code = Console.commandLine(out, err).execute(line.replace("DIR", dir.toString()).split(" "));
        String said = err.toString(StandardCharsets.UTF_8);
        assertEquals(List.of(2, "", 1L, true), List.of(code, out.toString(StandardCharsets.UTF_8), said.lines().count(),
                said.startsWith(message.replace("DIR", dir.toString()))), said);
    }

    /** A suggestion is a near miss of the word, never the word itself nor a guess from one letter. */
    @ParameterizedTest(name = "{0} among {1}")
    @CsvSource(delimiter = '|', value = {"--help | --help -h | ''", "--x | -h --help -V | ''", "-z | -q -x | ''",
        "--dril | --drill --no-drill | ' (did you mean --drill?)'", "rnu | run call help | ' (did you mean run?)'",
        "--JSON | --json --junit | ' (did you mean --json?)'"})
    void didYouMean(String word, String names, String hint) {
        assertEquals(hint, Console.didYouMean(word, List.of(names.split(" ")), ""));
    }

    /** A file the console did not write is refused however it is named, and left as it was. */
    @ParameterizedTest(name = "{0}")
    @CsvSource(delimiter = '|', value = {"--junit | <testsuites name=\"other\"/>",
        "--json | {\"passed\": true}", "--json | {\"generator\": \"other\"}", "--junit | 1000"})
    void aFileOfAnotherToolIsNotReplaced(String option, String content) throws Exception {
        Path file = Files.writeString(dir.resolve("theirs"), content);
        ByteArrayOutputStream err = new ByteArrayOutputStream();
        int code = Console.commandLine(new ByteArrayOutputStream(), err).execute("run", option, file.toString());
        assertEquals(List.of(2, content), List.of(code, Files.readString(file)), err.toString(StandardCharsets.UTF_8));
    }
}
