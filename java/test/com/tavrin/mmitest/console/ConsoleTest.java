package com.tavrin.mmitest.console;

import com.tavrin.mmitest.console.FactorySequence.Probe;
import com.tavrin.mmitest.console.FactorySequence.Step;
import com.tavrin.mmitest.model.BigDataOperation;
import com.tavrin.mmitest.model.BigDataValue;

import java.lang.reflect.Method;
import java.util.HashSet;
import java.util.List;
import java.util.Set;

/** The console's command-line parsing and value printing; loads no native library. */
public final class ConsoleTest {
    private ConsoleTest() {}

    public static void main(String[] args) {
        Check.groups(List.of(ConsoleTest::jsonStrings, ConsoleTest::scalars, ConsoleTest::arrays,
                ConsoleTest::models, ConsoleTest::answerRequoting, ConsoleTest::callLines, ConsoleTest::sequence));
    }

    private static void jsonStrings() {
        Check.group = "JSON strings";
        String smile = new String(Character.toChars(0x1f600));
        Check.eq("\"a\\\"b\\\\c\\n\\t\\r\\b\\f\\u0001\\u007f\\u00e9\\ud83d\\ude00\"",
                Json.quote("a\"b\\c\n\t\r\b\f\u0001\u007f\u00e9" + smile), "escapes, non-ASCII as \\u, non-BMP as a pair");
        Check.eq(smile, Values.parseString("\"\\ud83d\\uDE00\""), "surrogate pair escapes, either case");
        Check.eq(smile + "x", Values.parseString("\"" + smile + "x\""), "raw non-BMP character");
        Check.eq("a/b\"", Values.parseString("\"a\\/b\\\"\""), "solidus and quote escapes");
        for (String s : List.of("", "battery", "line\nbreak", "tab\tand \"quotes\" \\", "\u0000nul", "\u00e9" + smile,
                "\ud800 lone surrogate")) {
            Check.eq(s, Values.parseString(Json.quote(s)), "round trip of " + Json.quote(s));
        }
        Check.eq("battery", Values.parse(String.class, "battery"), "bare word, as the shell delivers \"battery\"");
        Check.eq("has \"inner\" quotes", Values.parse(String.class, "has \"inner\" quotes"), "bare text keeps inner quotes");
        Check.eq(null, Values.parse(String.class, "null"), "null");
        Check.eq("null", Values.parse(String.class, "\"null\""), "quoted null is text");
        Check.refused(() -> Values.parseString("\"abc"), "unterminated", "unterminated");
        Check.refused(() -> Values.parseString("\"a\\qb\""), "unknown escape", "\\q");
        Check.refused(() -> Values.parseString("\"\\u12\""), "short \\u", "four hex digits");
        Check.refused(() -> Values.parseString("\"\\u12g4\""), "non-hex \\u", "four hex digits");
        Check.refused(() -> Values.parseString("\"a\"b"), "text after the string", "unexpected text");
    }

    private static void scalars() {
        Check.group = "ints, longs, booleans";
        Check.eq(-12, Values.parse(int.class, "-12"), "negative int");
        Check.eq(Integer.MIN_VALUE, Values.parse(int.class, "-2147483648"), "smallest int");
        Check.eq(Long.MAX_VALUE, Values.parse(long.class, "9223372036854775807"), "largest long");
        Check.eq(true, Values.parse(boolean.class, "true"), "true");
        Check.eq(false, Values.parse(boolean.class, "false"), "false");
        for (String bad : List.of("2147483648", "+5", " 5", "5 ", "0x10", "1e3", "", "null")) {
            Check.refused(() -> Values.parse(int.class, bad), "int " + Json.quote(bad), "not an int");
        }
        Check.refused(() -> Values.parse(long.class, "9223372036854775808"), "long overflow", "not a long");
        for (String bad : List.of("TRUE", "1", "yes", "null")) {
            Check.refused(() -> Values.parse(boolean.class, bad), "boolean " + bad, "not a boolean");
        }
        Check.eq("-1", Values.format(-1L), "long");
        Check.eq("false", Values.format(false), "boolean");
        Check.eq("\"\"", Values.format(""), "empty string, not null");
        Check.eq("null", Values.format(null), "null");
    }

    private static void arrays() {
        Check.group = "int and byte arrays";
        Check.eq(new int[] {1, -2, 3}, Values.parse(int[].class, "[1, -2,3]"), "int array with blanks");
        Check.eq(new int[] {}, Values.parse(int[].class, "[ ]"), "empty int array");
        Check.eq(null, Values.parse(int[].class, "null"), "null int array");
        for (String bad : List.of("[1,]", "[1 2]", "[1", "1,2", "[2147483648]", "[1]x", "[\"1\"]")) {
            Check.refused(() -> Values.parse(int[].class, bad), "int array " + bad);
        }
        Check.eq("[1, -2, 3]", Values.format(new int[] {1, -2, 3}), "int array printed");
        Check.eq("[]", Values.format(new int[0]), "empty int array printed");
        byte[] bytes = {0x00, 0x7f, (byte) 0xa5, (byte) 0xff};
        Check.eq(bytes, Values.parse(byte[].class, "x007fa5ff"), "hex bytes");
        Check.eq(bytes, Values.parse(byte[].class, "x007FA5FF"), "upper-case hex bytes");
        Check.eq(new byte[0], Values.parse(byte[].class, "x"), "no bytes");
        Check.eq(null, Values.parse(byte[].class, "null"), "null byte array");
        for (String bad : List.of("x0", "007f", "0x007f", "xzz", "x 00")) {
            Check.refused(() -> Values.parse(byte[].class, bad), "bytes " + bad, "hex");
        }
        Check.eq("x007fa5ff", Values.format(bytes), "bytes printed lower-case");
    }

    private static void models() {
        Check.group = "model objects";
        BigDataValue v = (BigDataValue) Values.parse(BigDataValue.class, "{\"mVersion\":1,\"mBsn\":\"X\\u00e9\"}");
        Check.eq(1, v.mVersion, "int field");
        Check.eq("X\u00e9", v.mBsn, "string field with escape");
        Check.eq(0, v.mItemId, "unnamed int keeps its default");
        Check.eq("", v.mResult, "unnamed string keeps its default");
        BigDataValue bare = (BigDataValue) Values.parse(BigDataValue.class,
                "{mVersion:2, mTime: 10:11 , mResult:null, mStation:\"a,b}\"}");
        Check.eq(2, bare.mVersion, "bare key");
        Check.eq("10:11", bare.mTime, "bare text value keeps colons, loses surrounding blanks");
        Check.eq(null, bare.mResult, "null string field");
        Check.eq("a,b}", bare.mStation, "quoted value keeps separators");
        Check.eq(null, Values.parse(BigDataValue.class, "null"), "null object");
        Check.refused(() -> Values.parse(BigDataValue.class, "{\"mBogus\":1}"), "unknown field", "mBogus");
        Check.refused(() -> Values.parse(BigDataValue.class, "{\"mVersion\":\"1\"}"), "text for an int", "integer");
        Check.refused(() -> Values.parse(BigDataValue.class, "{\"mVersion\":1"), "unclosed object", "'}'");
        Check.refused(() -> Values.parse(BigDataValue.class, "{\"mVersion\" 1}"), "missing colon", "':'");
        Check.refused(() -> Values.parse(BigDataOperation.class, "{}x"), "text after the object", "unexpected text");

        BigDataOperation op = new BigDataOperation(1, 17, 2, "B\"1", "S", -3);
        String printed = Values.format(op);
        Check.eq("{\"mVersion\":1,\"mCommandId\":17,\"mOperation\":2,\"mBsn\":\"B\\\"1\",\"mStation\":\"S\",\"mCycle\":-3}",
                printed, "operation printed in field order");
        Check.eq(printed, Values.format(Values.parse(BigDataOperation.class, printed)), "printed operation reads back");
        BigDataValue full = new BigDataValue(101, "tp", "pressure", "512", "400", "600", null).version(1).time("t");
        String fullText = Values.format(full);
        Check.that(fullText.contains("\"mResult\":null") && fullText.contains("\"mItemId\":101"),
                "value printed with its null and ints: " + fullText);
        Check.eq(fullText, Values.format(Values.parse(BigDataValue.class, fullText)), "printed value reads back");
    }

    private static void answerRequoting() {
        Check.group = "answer requoting";
        Check.eq("5,\"x\"", Answers.requote("5,x"), "bare text after a code");
        Check.eq("true,\"crown ok\"", Answers.requote("true,crown ok"), "bare text with a blank");
        Check.eq("\"x\\\"y\"", Answers.requote("x\"y"), "a stray quote is escaped");
        for (String kept : List.of("7", "-3,1.5e3", "0,\"a,b\"", "0,[1, 2, 3]", "0,\"a\\\",b\",[1,2]", "false",
                "0,null", "nocallback", "transport-error", "0,")) {
            Check.eq(kept, Answers.requote(kept), "left alone: " + kept);
        }
        Check.eq(List.of("0", "\"a\\\",b\"", "[1,2]", " x"), Answers.fields("0,\"a\\\",b\",[1,2], x"),
                "split outside quotes and brackets");
        Check.eq("0,\"a\\\\\",\"x\"", Answers.requote("0,\"a\\\\\",x"), "an escaped backslash ends no quote early");
    }

    private static void callLines() {
        Check.group = "call command lines";
        // As bash delivers: --answer power.getPowerState=5,"x" getPowerStateNative "battery"
        CallRequest r = CallRequest.parse(List.of("--answer", "power.getPowerState=5,x", "getPowerStateNative", "battery"));
        Check.eq(1, r.answers.size(), "one answer");
        Check.eq("power.getPowerState=5,x", r.answers.get(0).toString(), "answer parts");
        Check.eq("getPowerStateNative", r.method.getName(), "method");
        Check.eq(new Object[] {"battery"}, r.arguments, "argument");

        r = CallRequest.parse(List.of("--absent", "light", "--only-1.0=display", "--answer=factory.getFactoryInfo=0,\"a=b\"",
                "--", "sensorActivateNative", "5", "true", "-1"));
        Check.eq(List.of("light"), r.absent, "absent");
        Check.eq(List.of("display"), r.onlyV10, "only 1.0");
        Check.eq("0,\"a=b\"", r.answers.get(0).text, "answer text keeps '='");
        Check.eq(new Object[] {5, true, -1}, r.arguments, "converted by parameter type");

        Check.refused(() -> CallRequest.parse(List.of("--absent", "sensor", "getBsnNative")), "unknown service", "sensor");
        Check.refused(() -> CallRequest.parse(List.of("--only-1.0", "power", "getBsnNative")), "power has one version",
                "factory, display, sensors");
        Check.refused(() -> CallRequest.parse(List.of("--answer", "power=5", "getBsnNative")), "answer without operation",
                "SERVICE.OPERATION=ANSWER");
        Check.refused(() -> CallRequest.parse(List.of("--answer", "power.getPowerState", "getBsnNative")), "answer without '='",
                "SERVICE.OPERATION=ANSWER");
        Check.refused(() -> CallRequest.parse(List.of("--absent")), "option without value", "needs a value");
        Check.refused(() -> CallRequest.parse(List.of("--verbose", "getBsnNative")), "unknown option", "--verbose");
        Check.refused(() -> CallRequest.parse(List.of()), "no method", "no method");
        Check.refused(() -> CallRequest.parse(List.of("getPowerState", "battery")), "wrong method name", "getPowerState");
        Check.refused(() -> CallRequest.parse(List.of("getPowerStateNative")), "too few arguments",
                "takes 1 argument, got 0", "String query");
        Check.refused(() -> CallRequest.parse(List.of("getBsnNative", "x")), "too many arguments", "takes 0 arguments, got 1");
        Check.refused(() -> CallRequest.parse(List.of("setMmiResultNative", "1", "two")), "bad second argument",
                "argument 2", "not an int: two");
    }

    private static void sequence() {
        Check.group = "factory sequence";
        List<Step> steps = FactorySequence.steps();
        Set<String> covered = new HashSet<>();
        for (Step step : steps) {
            Method m;
            try {
                m = step.resolve();
            } catch (IllegalArgumentException e) {
                Check.that(false, e.getMessage());
                continue;
            }
            covered.add(m.getName());
            Class<?>[] types = m.getParameterTypes();
            boolean fits = types.length == step.args.length;
            for (int i = 0; fits && i < types.length; i++) {
                Object a = step.args[i];
                fits = types[i].isPrimitive() ? a != null && boxed(types[i]) == a.getClass() : a == null || types[i].isInstance(a);
            }
            Check.that(fits, step.method + " gets arguments of its parameter types");
            Check.that(!step.expect.test(step.failureValue()), step.method + ": its failure value is not a PASS");
        }
        Check.eq(52, Natives.all().size(), "native methods declared");
        for (Method m : Natives.all()) {
            Check.that(covered.contains(m.getName()), "the sequence calls " + m.getName());
        }

        List<Probe> probes = FactorySequence.probes();
        Set<String> services = new HashSet<>();
        for (Probe p : probes) {
            services.add(p.service);
        }
        Check.eq(new HashSet<>(CallRequest.SERVICES), services, "the drill probes every service");
        Check.that(probes.stream().filter(p -> p.service.equals(FactoryRun.DRILL_SERVICE)).count() >= 1,
                "the drill probes the service it kills");

        Check.that(FactorySequence.CODE.test(0) && !FactorySequence.CODE.test(5) && !FactorySequence.CODE.test(-1),
                "a code passes only at 0");
        Check.that(FactorySequence.QUANTITY.test(0L) && FactorySequence.QUANTITY.test(5000L)
                && !FactorySequence.QUANTITY.test(-1L), "a quantity passes from 0 up");
        FactorySequence.Expect crown = FactorySequence.text("error");
        Check.that(crown.test("crown ok") && !crown.test("error") && !crown.test("") && !crown.test(null),
                "a text passes unless empty or a failure text");
        Check.that(FactorySequence.values(64).test(new int[64]) && !FactorySequence.values(64).test(new int[8])
                && !FactorySequence.values(64).test(null), "values pass at the right count only");
    }

    private static Class<?> boxed(Class<?> primitive) {
        return primitive == int.class ? Integer.class : primitive == long.class ? Long.class : Boolean.class;
    }
}
