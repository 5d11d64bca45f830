package com.tavrin.mmitest.console;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.StringWriter;
import java.util.Arrays;
import java.util.HashMap;
import java.util.List;
import java.util.Map;

import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

/** The terminal's width and colour as the console settles them, and tables cut to that width. */
class TerminalTest {
    /** Pairs of name and value; "-" leaves the name out. */
    private static Map<String, String> map(String... pairs) {
        Map<String, String> m = new HashMap<>();
        for (int i = 0; i + 1 < pairs.length; i += 2) {
            if (!pairs[i + 1].equals("-")) {
                m.put(pairs[i], pairs[i + 1]);
            }
        }
        return m;
    }

    /** COLUMNS, else the width ./mmi saw, else 80; only a positive number counts. */
    @ParameterizedTest(name = "COLUMNS={0} mmi.terminal.columns={1}")
    @CsvSource({"-, -, 80", "100, -, 100", "100, 60, 100", "-, 60, 60", "0, 60, 60", "abc, -, 80", "-1, 120, 120"})
    void width(String columns, String property, int width) {
        Terminal t = Terminal.of(map("COLUMNS", columns), map("mmi.terminal.columns", property)::get, false);
        assertEquals(width, t.width());
    }

    /** Colour only on a terminal, without NO_COLOR (an empty one does not count) and without --no-color. */
    @ParameterizedTest(name = "tty={0} NO_COLOR={1} --no-color={2}")
    @CsvSource({"true, -, false, true", "false, -, false, false", "-, -, false, false", "true, 1, false, false",
        "true, '', false, true", "true, -, true, false"})
    void colour(String tty, String noColor, boolean option, boolean colour) {
        Terminal t = Terminal.of(map("NO_COLOR", noColor), map("mmi.stdout.tty", tty)::get, option);
        assertEquals(colour, t.colour());
        assertEquals(colour, t.paint(Terminal.Colour.RED, "FAIL").contains("\033["));
    }

    @ParameterizedTest
    @CsvSource({"abcdef, 6, abcdef", "abcdefg, 6, abcde\u2026", "ab, 1, \u2026",
        "\ud83d\ude00\ud83d\ude00x, 2, \ud83d\ude00\u2026",
        // An escape is shown whole or not at all: a cut one would read back as another character.
        "'ab\\ude00cdefgh', 6, ab\u2026", "'ab\\ude00cdefgh', 9, ab\\ude00\u2026", "'a\\\"bcdef', 3, a\u2026",
        "'a\\\"bcdef', 4, a\\\"\u2026"})
    void fitCutsWithAnEllipsis(String text, int width, String shown) {
        assertEquals(shown, Terminal.fit(text, width));
    }

    @Test
    void controlCharactersAreEscaped() {
        assertEquals("a\\u001b[31mb\\u0007\\u007f caf\u00e9", Terminal.printable("a\033[31mb\u0007\u007f caf\u00e9"));
    }

    /** The widest columns give way first, none below its minimum. */
    @ParameterizedTest(name = "{0} in {2}")
    @CsvSource(delimiter = '|', value = {"4 2 60 30 | 4 2 30 12 | 70 | 4 2 34 30",
        "4 2 60 30 | 4 2 30 12 | 60 | 4 2 30 24", "4 2 10 10 | 4 2 8 8 | 70 | 4 2 10 10",
        "4 2 60 30 | 4 2 30 12 | 10 | 4 2 30 12"})
    void columnsShrinkWidestFirst(String wanted, String minimum, int available, String widths) {
        assertArrayEquals(ints(widths), Table.fit(ints(wanted), ints(minimum), available));
    }

    private static int[] ints(String text) {
        return Arrays.stream(text.trim().split(" ")).mapToInt(Integer::parseInt).toArray();
    }

    @Test
    void rowsFitTheWidthAndStartWithTheVerdict() {
        StringWriter text = new StringWriter();
        Table table = new Table(new Table.Screen(text, new Terminal(40, false), false), new String[] {"", "#", "call"},
                List.<String[]>of(new String[] {"PASS", "77", "x".repeat(60)}), new int[] {4, 2, 10});
        table.row("FAIL", "7", "x".repeat(60));
        table.note("log: " + "y".repeat(60));
        String[] lines = text.toString().split("\n");
        assertEquals("  FAIL  7   " + "x".repeat(27) + "\u2026", lines[1]);
        for (String line : lines) {
            assertTrue(Terminal.columns(line) <= 40, line);
        }
    }
}
