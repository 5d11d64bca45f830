package com.tavrin.mmitest.console;

/**
 * The little JSON the console reads and writes: quoted strings, integers and flat objects. Output
 * is ASCII only (everything else as \\uXXXX), so results survive any terminal encoding and can be
 * pasted back as arguments.
 */
final class Json {
    private Json() {}

    static String quote(String s) {
        StringBuilder out = new StringBuilder(s.length() + 2).append('"');
        for (int i = 0; i < s.length(); i++) {
            char c = s.charAt(i);
            switch (c) {
                case '"': out.append("\\\""); break;
                case '\\': out.append("\\\\"); break;
                case '\n': out.append("\\n"); break;
                case '\r': out.append("\\r"); break;
                case '\t': out.append("\\t"); break;
                case '\b': out.append("\\b"); break;
                case '\f': out.append("\\f"); break;
                default:
                    if (c < 0x20 || c > 0x7e) {
                        out.append(String.format("\\u%04x", (int) c));
                    } else {
                        out.append(c);
                    }
            }
        }
        return out.append('"').toString();
    }

    /** Reads JSON tokens from one text; every error names the position it was found at. */
    static final class Reader {
        private final String text;
        private int pos;

        Reader(String text) {
            this.text = text;
        }

        boolean atEnd() {
            skipSpace();
            return pos >= text.length();
        }

        char peek() {
            skipSpace();
            return pos < text.length() ? text.charAt(pos) : '\0';
        }

        void expect(char c) {
            if (peek() != c) {
                throw error("expected '" + c + "'");
            }
            pos++;
        }

        /** Consumes c if it comes next. */
        boolean accept(char c) {
            if (peek() != c) {
                return false;
            }
            pos++;
            return true;
        }

        void expectEnd() {
            if (!atEnd()) {
                throw error("unexpected text");
            }
        }

        String string() {
            expect('"');
            StringBuilder out = new StringBuilder();
            while (pos < text.length()) {
                char c = text.charAt(pos++);
                if (c == '"') {
                    return out.toString();
                }
                if (c != '\\') {
                    out.append(c);
                    continue;
                }
                if (pos >= text.length()) {
                    break;
                }
                char e = text.charAt(pos++);
                switch (e) {
                    case '"': case '\\': case '/': out.append(e); break;
                    case 'n': out.append('\n'); break;
                    case 'r': out.append('\r'); break;
                    case 't': out.append('\t'); break;
                    case 'b': out.append('\b'); break;
                    case 'f': out.append('\f'); break;
                    case 'u': out.append(hexChar()); break;
                    default:
                        pos--;
                        throw error("unknown escape \\" + e);
                }
            }
            throw error("unterminated string");
        }

        private char hexChar() {
            if (pos + 4 > text.length()) {
                throw error("\\u needs four hex digits");
            }
            int value = 0;
            for (int i = 0; i < 4; i++) {
                int digit = Character.digit(text.charAt(pos + i), 16);
                if (digit < 0) {
                    throw error("\\u needs four hex digits");
                }
                value = value * 16 + digit;
            }
            pos += 4;
            return (char) value;
        }

        /** An optionally signed run of decimal digits, range-checked by the caller. */
        String integer() {
            skipSpace();
            int start = pos;
            if (pos < text.length() && text.charAt(pos) == '-') {
                pos++;
            }
            int digits = pos;
            while (pos < text.length() && Character.isDigit(text.charAt(pos))) {
                pos++;
            }
            if (pos == digits) {
                pos = start;
                throw error("expected an integer");
            }
            return text.substring(start, pos);
        }

        /** A key or value written without quotes: everything up to the next of the stop characters. */
        String bare(String stops) {
            skipSpace();
            int start = pos;
            while (pos < text.length() && stops.indexOf(text.charAt(pos)) < 0) {
                pos++;
            }
            String word = text.substring(start, pos).strip();
            if (word.isEmpty()) {
                throw error("expected a value");
            }
            return word;
        }

        IllegalArgumentException error(String what) {
            return new IllegalArgumentException(what + " at position " + pos + " of " + text);
        }

        private void skipSpace() {
            while (pos < text.length() && Character.isWhitespace(text.charAt(pos))) {
                pos++;
            }
        }
    }
}
