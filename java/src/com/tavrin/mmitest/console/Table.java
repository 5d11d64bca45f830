package com.tavrin.mmitest.console;

import java.io.PrintWriter;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.OptionalInt;
import java.util.stream.IntStream;
import java.util.stream.Stream;

/**
 * A table printed row by row as results come in, so its column widths are settled up front from
 * what each column wants; when the terminal is narrower, the widest columns give way first and
 * long cells end in an ellipsis. A first cell that is a verdict (PASS, FAIL or SKIP) is coloured.
 * Verbose tables cut nothing: a long cell pushes the rest of its row right.
 */
final class Table {
    static final String INDENT = "  ";
    static final String GAP = "  ";
    /** Where the lines under a row start: past the verdict. */
    static final String NOTE_INDENT = "        ";

    private final PrintWriter out;
    private final Terminal terminal;
    private final boolean full;
    private final int[] widths;

    /**
     * Prints the header of a table whose columns want the width of their widest cell, the header's
     * included, and shrink no further than minimum.
     */
    Table(PrintWriter out, Terminal terminal, boolean full, String[] header, List<String[]> rows, int[] minimum) {
        this.out = out;
        this.terminal = terminal;
        this.full = full;
        List<String[]> all = Stream.concat(Stream.<String[]>of(header), rows.stream()).toList();
        int[] wanted = IntStream.range(0, header.length)
                .map(c -> all.stream().mapToInt(row -> Terminal.columns(row[c])).max().orElse(0)).toArray();
        int available = terminal.width() - INDENT.length() - GAP.length() * (header.length - 1);
        // Verbose rows keep the layout but cut no cell: one wider than its column runs on, and the
        // columns after it give up their alignment rather than pad every row to the widest cell.
        widths = fit(wanted, minimum, available);
        row(header);
    }

    /**
     * Widths that add up to at most available: the widest column above its minimum loses a column
     * at a time, so short columns keep their width and long ones end up equal.
     */
    static int[] fit(int[] wanted, int[] minimum, int available) {
        int[] w = wanted.clone();
        for (int total = Arrays.stream(w).sum(); total > available; total--) {
            OptionalInt widest = IntStream.range(0, w.length).filter(c -> w[c] > minimum[c])
                    .reduce((a, b) -> w[b] > w[a] ? b : a);
            if (widest.isEmpty()) {
                break;
            }
            w[widest.getAsInt()]--;
        }
        return w;
    }

    void row(String... cells) {
        StringBuilder line = new StringBuilder(INDENT);
        for (int c = 0; c < cells.length; c++) {
            String cell = full ? Terminal.printable(cells[c]) : Terminal.fit(Terminal.printable(cells[c]), widths[c]);
            boolean last = c + 1 == cells.length;
            String padding = last ? "" : " ".repeat(Math.max(0, widths[c] - Terminal.columns(cell))) + GAP;
            line.append(c == 0 ? paint(terminal, cell) : cell).append(padding);
        }
        out.println(line.toString().replaceFirst(" +$", ""));
    }

    /** A verdict and a text on a line of their own, in the table's layout. */
    static void verdictLine(PrintWriter out, Terminal terminal, boolean full, String verdict, String text) {
        String shown = Terminal.printable(text);
        int room = terminal.width() - INDENT.length() - verdict.length() - GAP.length();
        out.println(INDENT + paint(terminal, verdict) + GAP + (full ? shown : Terminal.fit(shown, room)));
    }

    private static String paint(Terminal terminal, String verdict) {
        return switch (verdict) {
            case "PASS" -> terminal.paint(Terminal.Colour.GREEN, verdict);
            case "FAIL" -> terminal.paint(Terminal.Colour.RED, verdict);
            case "SKIP" -> terminal.paint(Terminal.Colour.YELLOW, verdict);
            default -> verdict;
        };
    }

    /**
     * A summary line broken at spaces into lines of at most width columns, the later ones indented;
     * a word longer than the width stays whole.
     */
    static List<String> wrap(String text, int width) {
        List<String> lines = new ArrayList<>();
        String rest = text;
        while (Terminal.columns(rest) > width) {
            int cut = rest.lastIndexOf(' ', Math.min(rest.length(), width));
            if (cut <= INDENT.length()) {
                // A word wider than the line: it stays whole, and the break comes after it.
                cut = rest.indexOf(' ', INDENT.length());
                if (cut < 0) {
                    break;
                }
            }
            lines.add(rest.substring(0, cut).replaceFirst(" +$", ""));
            rest = INDENT + rest.substring(cut + 1).stripLeading();
        }
        lines.add(rest);
        return lines;
    }

    /** A line under the last row. */
    void note(String text) {
        line(out, terminal, full, NOTE_INDENT + text);
    }

    /** A line of its own, cut to the terminal's width unless full. */
    static void line(PrintWriter out, Terminal terminal, boolean full, String text) {
        String shown = Terminal.printable(text);
        out.println(full ? shown : Terminal.fit(shown, terminal.width()));
    }
}
