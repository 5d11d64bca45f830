package com.tavrin.mmitest.console;

import java.io.PrintWriter;
import java.io.Writer;
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

    /** Where tables and lines go, with the terminal's width and colour and whether cells are cut (not verbose). */
    static final class Screen extends PrintWriter {
        final Terminal terminal;
        final boolean full;

        Screen(Writer out, Terminal terminal, boolean full) {
            super(out, true);
            this.terminal = terminal;
            this.full = full;
        }

        /** The text with its control characters escaped, cut to width unless full. */
        String cut(String text, int width) {
            String shown = Terminal.printable(text);
            return full ? shown : Terminal.fit(shown, width);
        }

        /** A line of its own. */
        void line(String text) {
            println(cut(text, terminal.width()));
        }

        /** A verdict and a text on a line of their own, in the table's layout. */
        void verdictLine(String verdict, String text) {
            println(INDENT + paint(verdict) + GAP
                    + cut(text, terminal.width() - INDENT.length() - verdict.length() - GAP.length()));
        }

        /** A verdict (PASS, FAIL or SKIP) in its colour; any other text as it is. */
        String paint(String verdict) {
            return switch (verdict) {
                case "PASS" -> terminal.paint(Terminal.Colour.GREEN, verdict);
                case "FAIL" -> terminal.paint(Terminal.Colour.RED, verdict);
                case "SKIP" -> terminal.paint(Terminal.Colour.YELLOW, verdict);
                default -> verdict;
            };
        }

        /**
         * A summary line broken at spaces into lines of at most the terminal's width, the later ones
         * indented; a word longer than the width stays whole.
         */
        void wrap(String text) {
            String rest = text;
            while (Terminal.columns(rest) > terminal.width()) {
                int cut = rest.lastIndexOf(' ', Math.min(rest.length(), terminal.width()));
                if (cut <= INDENT.length()) {
                    // A word wider than the line: it stays whole, and the break comes after it.
                    cut = rest.indexOf(' ', INDENT.length());
                    if (cut < 0) {
                        break;
                    }
                }
                println(rest.substring(0, cut).replaceFirst(" +$", ""));
                rest = INDENT + rest.substring(cut + 1).stripLeading();
            }
            println(rest);
        }
    }

    private final Screen out;
    private final int[] widths;

    /**
     * Prints the header of a table whose columns want the width of their widest cell, the header's
     * included, and shrink no further than minimum.
     */
    Table(Screen out, String[] header, List<String[]> rows, int[] minimum) {
        this.out = out;
        List<String[]> all = Stream.concat(Stream.<String[]>of(header), rows.stream()).toList();
        int[] wanted = IntStream.range(0, header.length)
                .map(c -> all.stream().mapToInt(row -> Terminal.columns(row[c])).max().orElse(0)).toArray();
        int available = out.terminal.width() - INDENT.length() - GAP.length() * (header.length - 1);
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
            String cell = out.cut(cells[c], widths[c]);
            boolean last = c + 1 == cells.length;
            String padding = last ? "" : " ".repeat(Math.max(0, widths[c] - Terminal.columns(cell))) + GAP;
            line.append(c == 0 ? out.paint(cell) : cell).append(padding);
        }
        out.println(line.toString().replaceFirst(" +$", ""));
    }

    /** A line under the last row. */
    void note(String text) {
        out.line(NOTE_INDENT + text);
    }
}
