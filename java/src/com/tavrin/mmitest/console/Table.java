package com.tavrin.mmitest.console;

import java.io.PrintWriter;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;

/**
 * A table printed row by row as results come in, so its column widths are settled up front from
 * what each column wants; when the terminal is narrower, the widest columns give way first and
 * long cells end in an ellipsis. The first column is the verdict: PASS, FAIL or SKIP, coloured.
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
     * natural: the width each column wants; minimum: below which it does not shrink. The header's
     * names count as wanted widths too.
     */
    Table(PrintWriter out, Terminal terminal, boolean full, String[] header, int[] natural, int[] minimum) {
        this.out = out;
        this.terminal = terminal;
        this.full = full;
        int[] wanted = new int[header.length];
        for (int c = 0; c < header.length; c++) {
            wanted[c] = Math.max(natural[c], header[c].length());
        }
        int available = terminal.width - INDENT.length() - GAP.length() * (header.length - 1);
        // Verbose rows keep the layout but cut no cell: one wider than its column runs on, and the
        // columns after it give up their alignment rather than pad every row to the widest cell.
        widths = fit(wanted, minimum, available);
        print(null, header);
    }

    /** The widest cell of each column. */
    static int[] widest(List<String[]> rows) {
        int[] w = new int[rows.isEmpty() ? 0 : rows.get(0).length];
        for (String[] row : rows) {
            for (int c = 0; c < w.length; c++) {
                w[c] = Math.max(w[c], Terminal.columns(row[c]));
            }
        }
        return w;
    }

    /**
     * Widths that add up to at most available: the widest column above its minimum loses a column
     * at a time, so short columns keep their width and long ones end up equal.
     */
    static int[] fit(int[] wanted, int[] minimum, int available) {
        int[] w = Arrays.copyOf(wanted, wanted.length);
        int total = Arrays.stream(w).sum();
        while (total > available) {
            int widest = -1;
            for (int c = 0; c < w.length; c++) {
                if (w[c] > minimum[c] && (widest < 0 || w[c] > w[widest])) {
                    widest = c;
                }
            }
            if (widest < 0) {
                break;
            }
            w[widest]--;
            total--;
        }
        return w;
    }

    /** A row whose first cell is a verdict. */
    void row(String... cells) {
        print(verdictColour(cells[0]), cells);
    }

    /** A row without a verdict. */
    void plain(String... cells) {
        print(null, cells);
    }

    /** A verdict and a text on a line of their own, in the table's layout. */
    static void verdictLine(PrintWriter out, Terminal terminal, boolean full, String verdict, String text) {
        String shown = Terminal.printable(text);
        int room = terminal.width - INDENT.length() - verdict.length() - GAP.length();
        out.println(INDENT + terminal.paint(verdictColour(verdict), verdict) + GAP
                + (full ? shown : Terminal.fit(shown, room)));
    }

    static Terminal.Colour verdictColour(String verdict) {
        return switch (verdict) {
            case "PASS" -> Terminal.Colour.GREEN;
            case "FAIL" -> Terminal.Colour.RED;
            default -> Terminal.Colour.YELLOW;
        };
    }

    private void print(Terminal.Colour verdict, String[] cells) {
        StringBuilder line = new StringBuilder(INDENT);
        for (int c = 0; c < cells.length; c++) {
            String cell = Terminal.printable(cells[c]);
            cell = full ? cell : Terminal.fit(cell, widths[c]);
            String padded = c + 1 < cells.length ? cell + " ".repeat(Math.max(0, widths[c] - Terminal.columns(cell))) : cell;
            line.append(c == 0 && verdict != null ? terminal.paint(verdict, cell) + padded.substring(cell.length())
                    : padded);
            if (c + 1 < cells.length) {
                line.append(GAP);
            }
        }
        out.println(stripEnd(line));
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
            lines.add(stripEnd(new StringBuilder(rest.substring(0, cut))));
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
        out.println(full ? shown : Terminal.fit(shown, terminal.width));
    }

    private static String stripEnd(StringBuilder line) {
        int end = line.length();
        while (end > 0 && line.charAt(end - 1) == ' ') {
            end--;
        }
        return line.substring(0, end);
    }
}
