package com.tavrin.mmitest.console;

import static com.tavrin.mmitest.console.Check.REFUSED;

import com.tavrin.mmitest.model.BigDataOperation;
import com.tavrin.mmitest.model.BigDataValue;

import com.google.gson.JsonElement;
import com.google.gson.JsonParser;

import java.io.File;
import java.lang.invoke.MethodType;
import java.lang.reflect.Method;
import java.nio.file.Files;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Set;
import java.util.TreeSet;
import java.util.stream.Collectors;

import org.w3c.dom.Document;
import org.w3c.dom.Element;

/** The console's command-line parsing and value printing; loads no native library. */
public final class ConsoleTest {
    private static final String SMILE = new String(Character.toChars(0x1f600));

    private ConsoleTest() {}

    public static void main(String[] args) {
        Check.groups(List.of(ConsoleTest::parsing, ConsoleTest::printing, ConsoleTest::callLines, ConsoleTest::files,
                ConsoleTest::sequence));
    }

    private static void parsing() {
        Check.group = "parsing";
        byte[] bytes = {0x00, 0x7f, (byte) 0xa5, (byte) 0xff};
        Object[][] cases = { // type, text, value or REFUSED and a part of the reason
            {String.class, "\"\\ud83d\\uDE00\"", SMILE}, {String.class, "\"" + SMILE + "x\"", SMILE + "x"},
            {String.class, "\"a\\/b\\\"\"", "a/b\""}, {String.class, "battery", "battery"},
            {String.class, "has \"inner\" quotes", "has \"inner\" quotes"}, {String.class, "null", null},
            {String.class, "\"null\"", "null"}, {String.class, "\"abc", REFUSED, "unterminated"},
            {String.class, "\"a\\qb\"", REFUSED, "\\q"}, {String.class, "\"\\u12g4\"", REFUSED, "malformed escape"},
            {String.class, "\"a\"b", REFUSED, "unexpected text"},
            {int.class, "-2147483648", Integer.MIN_VALUE}, {int.class, "2147483648", REFUSED, "not an int"},
            {int.class, "+5", REFUSED, "not an int"}, {int.class, " 5", REFUSED, "not an int"},
            {long.class, "9223372036854775807", Long.MAX_VALUE}, {long.class, "9223372036854775808", REFUSED},
            {boolean.class, "false", false}, {boolean.class, "TRUE", REFUSED, "not a boolean"},
            {int[].class, "[1, -2,3]", new int[] {1, -2, 3}}, {int[].class, "[ ]", new int[0]},
            {int[].class, "null", null}, {int[].class, "[1,]", REFUSED}, {int[].class, "[1", REFUSED},
            {int[].class, "[2147483648]", REFUSED}, {int[].class, "[1]x", REFUSED}, {int[].class, "[01]", new int[] {1}},
            {byte[].class, "x007FA5ff", bytes}, {byte[].class, "x", new byte[0]}, {byte[].class, "null", null},
            {byte[].class, "x0", REFUSED, "hex"}, {byte[].class, "0x007f", REFUSED, "hex"},
            {byte[].class, "xzz", REFUSED, "hex"}, {BigDataValue.class, "{\"mBogus\":1}", REFUSED, "mBogus"},
            {BigDataValue.class, "{\"mVersion\":\"1\"}", REFUSED, "integer"}, {BigDataValue.class, "{mVersion:1", REFUSED, "end of input"},
            {BigDataOperation.class, "{}x", REFUSED, "unexpected text"},
        };
        for (Object[] c : cases) {
            Class<?> type = (Class<?>) c[0];
            String what = type.getSimpleName() + " " + c[1];
            if (c[2] == REFUSED) {
                Check.refused(() -> Values.parse(type, (String) c[1]), what, c.length > 3 ? (String) c[3] : "");
            } else {
                Check.eq(c[2], Values.parse(type, (String) c[1]), what);
            }
        }
    }

    private static void printing() {
        Check.group = "printing, model objects";
        Check.eq("\"a\\\"b\\\\c\\n\\t\\r\\b\\f\\u0001\\u007f\\u00e9\\ud83d\\ude00\"",
                Values.quote("a\"b\\c\n\t\r\b\f\u0001\u007f\u00e9" + SMILE), "escapes, non-ASCII as \\u, non-BMP as a pair");
        for (String s : List.of("", "tab\tand \"quotes\" \\", "\u0000nul", "\u00e9" + SMILE, "\ud800 lone surrogate")) {
            Check.eq(s, Values.parse(String.class, Values.quote(s)), "round trip of " + Values.quote(s));
        }
        Object[][] cases = {{-1L, "-1"}, {false, "false"}, {"", "\"\""}, {null, "null"},
            {new int[] {1, -2, 3}, "[1, -2, 3]"}, {new int[0], "[]"},
            {new byte[] {0x00, 0x7f, (byte) 0xa5, (byte) 0xff}, "x007fa5ff"}};
        for (Object[] c : cases) {
            Check.eq(c[1], Values.format(c[0]), "printed " + c[1]);
        }
        BigDataValue v = (BigDataValue) Values.parse(BigDataValue.class,
                "{\"mVersion\":1, mBsn:\"X\\u00e9\", mTime: 10:11 , mResult:null, mStation:\"a,b}\"}");
        Check.eq(Arrays.asList(1, "X\u00e9", "10:11", "a,b}", null, 0),
                Arrays.asList(v.mVersion, v.mBsn, v.mTime, v.mStation, v.mResult, v.mItemId),
                "quoted and bare keys and values, escapes, separators in quotes, null, an unnamed int's default");
        Check.eq("", ((BigDataValue) Values.parse(BigDataValue.class, "{}")).mResult, "unnamed string's default");
        String op = Values.format(new BigDataOperation(1, 17, 2, "B\"1", "S", -3));
        Check.eq("{\"mVersion\":1,\"mCommandId\":17,\"mOperation\":2,\"mBsn\":\"B\\\"1\",\"mStation\":\"S\",\"mCycle\":-3}",
                op, "operation printed in field order");
        Check.eq(op, Values.format(Values.parse(BigDataOperation.class, op)), "printed operation reads back");
        String full = Values.format(new BigDataValue(101, "tp", "pressure", "512", "400", "600", null).version(1));
        Check.that(full.contains("\"mResult\":null") && full.contains("\"mItemId\":101"), "value printed: " + full);
        Check.eq(full, Values.format(Values.parse(BigDataValue.class, full)), "printed value reads back");
    }

    private static void callLines() {
        Check.group = "call command lines and answers";
        String[][] cases = {{"5,x", "5,\"x\""}, {"true,crown ok", "true,\"crown ok\""}, {"x\"y", "\"x\\\"y\""},
            {"0,\"a\\\\\",x", "0,\"a\\\\\",\"x\""}, {"7", "7"}, {"-3,1.5e3", "-3,1.5e3"}, {"0,\"a,b\"", "0,\"a,b\""},
            {"0,\"a\\\",b\",[1, 2]", "0,\"a\\\",b\",[1, 2]"}, {"false,null", "false,null"}, {"nocallback", "nocallback"},
            {"transport-error", "transport-error"}, {"0,", "0,"}, {"0,bytes:00ff,x", "0,bytes:00ff,\"x\""}};
        for (String[] c : cases) {
            Check.eq(c[1], Answers.requote(c[0]), "requote " + c[0]);
        }
        // As bash delivers: --answer power.getPowerState=5,"x" getPowerStateNative "battery"
        CallCommand r = CallCommand.parse(List.of("--answer", "power.getPowerState=5,x", "getPowerStateNative", "battery"));
        Check.eq("[power.getPowerState=5,x] getPowerStateNative [battery]",
                r.device.answers + " " + r.method.getName() + " " + List.of(r.arguments), "answer, method, argument");
        r = CallCommand.parse(List.of("--absent", "light", "--only-1.0=display", "--answer=factory.getFactoryInfo=0,\"a=b\"",
                "--json", "--", "sensorActivateNative", "5", "true", "-1"));
        Check.eq(List.of(List.of("light"), List.of("display"), "0,\"a=b\"", true, List.of(5, true, -1)),
                List.of(r.device.absent, r.device.onlyV10, r.device.answers.get(0).text, r.json, List.of(r.arguments)),
                "options, typed arguments");
        r = CallCommand.parse(List.of("getPowerStateNative", "--answer"));
        Check.eq(List.of("--answer"), List.of(r.arguments), "after the method, an option's name is an argument");
        String[][] refused = {{"--only-1.0", "power", "getBsnNative", "factory, display, sensors"},
            {"--answer", "power=5", "getBsnNative", "SERVICE.OPERATION=ANSWER"}, {"--absent", "needs a value"},
            {"--absent", "nowhere", "getBsnNative", "unknown service nowhere"}, {"--bogus", "unknown option --bogus"},
            {"--absent", "light", "no method named"}, {"getBsnNative2", "no native method getBsnNative2"},
            {"getPowerStateNative", "takes 1 argument, got 0"}, {"setMmiResultNative", "1", "two", "argument 2"}};
        for (String[] c : refused) {
            List<String> line = List.of(c).subList(0, c.length - 1);
            Check.refused(() -> CallCommand.parse(line), String.join(" ", line), c[c.length - 1]);
        }
    }

    private static StepRecord record(String method, Object result, boolean passed, String... logs) {
        StepRecord r = new StepRecord(method, new Object[] {"battery"});
        r.result = result;
        r.expected = "text";
        r.passed = passed;
        r.logs = logs;
        r.calls = new String[] {"power.getPowerState(\"battery\")"};
        return r;
    }

    /** A report with every outcome, through both writers and back through a JSON and an XML parser. */
    private static void files() {
        Check.group = "results as files";
        RunReport report = new RunReport("power");
        StepRecord fine = record("getBsnNative", "KX1", true, "D fine");
        fine.fields.put("sTpCapacitanceFailInfo", "caf\u00e9");
        StepRecord wrong = record("getPowerStateNative", "", false, "E ctrl \u0001 and \ud800 unpaired", "D " + SMILE);
        StepRecord threw = record("getPowerStateNative", null, false);
        threw.thrown = new IllegalStateException("boom");
        report.steps.addAll(List.of(fine, wrong, threw));
        report.checks.add(new RunReport.DrillCheck("power: a()", RunReport.Status.FAIL, "FAIL: not restored",
                List.of("before: 1", "while down: -1", "after revive: -1")));
        report.checks.add(new RunReport.DrillCheck("display: b()", RunReport.Status.SKIPPED, "not checked", List.of()));
        report.line(true, "the death is reported", "the death is reported");
        report.killLogs = new String[] {"W died"};
        File xml = Check.temp(".xml");
        File json = Check.temp(".json");
        Check.io(() -> {
            report.writeJunit(xml.toPath());
            report.writeJson(json.toPath());
            return null;
        });
        Document doc = JunitCheck.parse(xml);
        Check.eq(List.of(), JunitCheck.problems(doc), "JUnit structure");
        List<String> outcomes = new ArrayList<>();
        String failureText = "";
        for (Element c : JunitCheck.cases(doc)) {
            String outcome = "pass";
            for (Element o : JunitCheck.children(c)) {
                if (!o.getTagName().startsWith("system-")) {
                    outcome = o.getTagName();
                    failureText += outcome.equals("failure") ? o.getTextContent() + "\n" : "";
                }
            }
            outcomes.add(c.getAttribute("name") + " " + outcome);
        }
        Check.eq(List.of("01 getBsnNative pass", "02 getPowerStateNative failure", "03 getPowerStateNative error",
                "power: a() failure", "display: b() skipped", "the death is reported pass"), outcomes,
                "one case per step and check, with its outcome");
        for (String part : List.of("method: getPowerStateNative", "arguments: \"battery\"", "answer: \"\"",
                "log: E ctrl \\u0001 and \\ud800 unpaired", "log: D " + SMILE, "after revive: -1", "log at the kill: W died")) {
            Check.that(failureText.contains(part), "failure text holds " + part + ": " + failureText);
        }

        String text = Check.io(() -> Files.readString(json.toPath()));
        Check.that(text.chars().allMatch(c -> c < 0x7f), "JSON file is ASCII");
        JsonElement root = JsonParser.parseString(text);
        String[][] facts = {{"passed", "false"}, {"sequence.failed", "2"},
            {"sequence.steps.0.fields.sTpCapacitanceFailInfo", "\"caf\\u00e9\""},
            {"sequence.steps.1.arguments.0", "\"battery\""}, {"sequence.steps.1.result", "\"\""},
            {"sequence.steps.1.passed", "false"}, {"sequence.steps.1.logs.0.priority", "\"E\""},
            {"sequence.steps.1.logs.0.text", "\"ctrl \\u0001 and \\ud800 unpaired\""},
            {"sequence.steps.2.threw", "\"java.lang.IllegalStateException: boom\""},
            {"drill.checks.1.status", "\"skipped\""}, {"drill.failed", "1"}, {"drill.kill_logs.0.text", "\"died\""}};
        for (String[] f : facts) {
            JsonElement e = root;
            for (String key : f[0].split("\\.")) {
                e = e.isJsonArray() ? e.getAsJsonArray().get(Integer.parseInt(key)) : e.getAsJsonObject().get(key);
            }
            Check.eq(f[1], e.isJsonPrimitive() && e.getAsJsonPrimitive().isString() ? Values.quote(e.getAsString())
                    : e.toString(), "JSON " + f[0]);
        }
        String line = CallCommand.json(wrong);
        Check.that(!line.contains("\n") && JsonParser.parseString(line).isJsonObject()
                && line.contains("\"logs\":[{\"priority\":\"E\",\"text\":\"ctrl \\u0001 and \\ud800 unpaired\"}"),
                "call --json: one object on one line: " + line);
    }

    /** The sequence covers every native method, and every step's arguments fit its method. */
    private static void sequence() {
        Check.group = "factory-test sequence";
        Set<String> covered = new TreeSet<>();
        for (FactorySequence.Step step : FactorySequence.steps()) {
            covered.add(step.method);
            Class<?>[] types = step.resolve().getParameterTypes();
            boolean fits = types.length == step.args.length;
            for (int i = 0; fits && i < types.length; i++) {
                fits = MethodType.methodType(types[i]).wrap().returnType().isInstance(step.args[i]);
            }
            Check.that(fits, step.method + " takes " + Arrays.toString(types) + ", given " + Arrays.deepToString(step.args));
        }
        Set<String> missing = Natives.all().stream().map(Method::getName).collect(Collectors.toCollection(TreeSet::new));
        missing.removeAll(covered);
        Check.eq(Set.of(), missing, "native methods the sequence leaves out");
    }
}
