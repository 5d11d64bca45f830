package com.tavrin.mmitest.console;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.tavrin.mmitest.model.BigDataOperation;
import com.tavrin.mmitest.model.BigDataValue;

import java.util.Arrays;
import java.util.stream.Stream;

import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.Arguments;
import org.junit.jupiter.params.provider.MethodSource;
import org.junit.jupiter.params.provider.ValueSource;

/** Arguments as typed on the console's command line, and values as it prints them. */
class ValuesTest {
    private static final String SMILE = new String(Character.toChars(0x1f600));

    static Stream<Arguments> accepted() {
        return Stream.of(
                Arguments.of(String.class, "\"\\ud83d\\uDE00\"", SMILE),
                Arguments.of(String.class, "\"" + SMILE + "x\"", SMILE + "x"),
                Arguments.of(String.class, "\"a\\/b\\\"\"", "a/b\""),
                Arguments.of(String.class, "battery", "battery"),
                Arguments.of(String.class, "has \"inner\" quotes", "has \"inner\" quotes"),
                Arguments.of(String.class, "null", null),
                Arguments.of(String.class, "\"null\"", "null"),
                Arguments.of(int.class, "-2147483648", Integer.MIN_VALUE),
                Arguments.of(long.class, "9223372036854775807", Long.MAX_VALUE),
                Arguments.of(boolean.class, "false", false),
                Arguments.of(int[].class, "[1, -2,3]", new int[] {1, -2, 3}),
                Arguments.of(int[].class, "[ ]", new int[0]),
                Arguments.of(int[].class, "null", null),
                Arguments.of(int[].class, "[01]", new int[] {1}),
                Arguments.of(byte[].class, "x007FA5ff", new byte[] {0x00, 0x7f, (byte) 0xa5, (byte) 0xff}),
                Arguments.of(byte[].class, "x", new byte[0]),
                Arguments.of(byte[].class, "null", null));
    }

    @ParameterizedTest(name = "{0} {1}")
    @MethodSource
    void accepted(Class<?> type, String text, Object value) {
        assertArrayEquals(new Object[] {value}, new Object[] {Values.parse(type, text)});
    }

    static Stream<Arguments> refused() {
        return Stream.of(
                Arguments.of(String.class, "\"abc", "unterminated"),
                Arguments.of(String.class, "\"a\\qb\"", "\\q"),
                Arguments.of(String.class, "\"\\u12g4\"", "malformed escape"),
                Arguments.of(String.class, "\"a\"b", "unexpected text"),
                Arguments.of(int.class, "2147483648", "out of range for int"),
                Arguments.of(int.class, "+5", "not an int"),
                Arguments.of(int.class, " 5", "not an int"),
                Arguments.of(long.class, "9223372036854775808", "out of range for long"),
                Arguments.of(boolean.class, "TRUE", "not a boolean"),
                Arguments.of(int[].class, "[1,]", ""),
                Arguments.of(int[].class, "[1", ""),
                Arguments.of(int[].class, "[2147483648]", "out of range for int"),
                Arguments.of(int[].class, "[1]x", ""),
                Arguments.of(byte[].class, "x0", "hex"),
                Arguments.of(byte[].class, "0x007f", "hex"),
                Arguments.of(byte[].class, "xzz", "hex"),
                Arguments.of(BigDataValue.class, "{\"mBogus\":1}", "mBogus"),
                Arguments.of(BigDataValue.class, "{\"mVersion\":\"1\"}", "integer"),
                Arguments.of(BigDataValue.class, "{mVersion:1", "end of input"),
                Arguments.of(BigDataOperation.class, "{}x", "unexpected text after the record at column 3 of {}x"),
                Arguments.of(BigDataValue.class, "{mBsn: a b} , x", "at column 13 of"));
    }

    @ParameterizedTest(name = "{0} {1}")
    @MethodSource
    void refused(Class<?> type, String text, String reason) {
        IllegalArgumentException e = assertThrows(IllegalArgumentException.class, () -> Values.parse(type, text));
        assertTrue(e.getMessage().contains(reason), e.getMessage());
    }

    @Test
    void quotesEscapesNonAsciiAndSurrogatePairs() {
        assertEquals("\"a\\\"b\\\\c\\n\\t\\r\\b\\f\\u0001\\u007f\\u00e9\\ud83d\\ude00\"",
                Values.format("a\"b\\c\n\t\r\b\f\u0001\u007f\u00e9" + SMILE));
    }

    @ParameterizedTest
    @ValueSource(strings = {"", "tab\tand \"quotes\" \\", "\u0000nul", "\u00e9\ud83d\ude00", "\ud800 lone surrogate"})
    void quotedTextReadsBack(String s) {
        assertEquals(s, Values.parse(String.class, Values.format(s)));
    }

    static Stream<Arguments> printed() {
        return Stream.of(Arguments.of(-1L, "-1"), Arguments.of(false, "false"), Arguments.of("", "\"\""),
                Arguments.of(null, "null"), Arguments.of(new int[] {1, -2, 3}, "[1, -2, 3]"),
                Arguments.of(new int[0], "[]"),
                Arguments.of(new byte[] {0x00, 0x7f, (byte) 0xa5, (byte) 0xff}, "x007fa5ff"));
    }

    @ParameterizedTest(name = "{1}")
    @MethodSource
    void printed(Object value, String text) {
        assertEquals(text, Values.format(value));
    }

    @Test
    void recordsReadQuotedAndBareKeysAndKeepDefaults() {
        BigDataValue v = (BigDataValue) Values.parse(BigDataValue.class,
                "{\"mVersion\":1, mBsn:\"X\\u00e9\", mTime: 10:11 , mResult:null, mStation:\"a,b}\"}");
        assertEquals(Arrays.asList(1, "X\u00e9", "10:11", "a,b}", null, 0),
                Arrays.asList(v.mVersion, v.mBsn, v.mTime, v.mStation, v.mResult, v.mItemId));
        assertEquals("", ((BigDataValue) Values.parse(BigDataValue.class, "{}")).mResult);
    }

    @Test
    void recordsPrintInFieldOrderAndReadBack() {
        String op = Values.format(new BigDataOperation(1, 17, 2, "B\"1", "S", -3));
        assertEquals("{\"mVersion\":1,\"mCommandId\":17,\"mOperation\":2,\"mBsn\":\"B\\\"1\",\"mStation\":\"S\",\"mCycle\":-3}",
                op);
        assertEquals(op, Values.format(Values.parse(BigDataOperation.class, op)));
        String full = Values.format(new BigDataValue(101, "tp", "pressure", "512", "400", "600", null).version(1));
        assertTrue(full.contains("\"mResult\":null") && full.contains("\"mItemId\":101"), full);
        assertEquals(full, Values.format(Values.parse(BigDataValue.class, full)));
    }
}
