package com.tavrin.mmitest.console;

import com.google.gson.stream.JsonWriter;
import com.tavrin.mmitest.controller.MmiNativeManager;
import com.tavrin.mmitest.sim.SimulatedDevice;

import java.io.IOException;
import java.lang.reflect.Field;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;

/**
 * What one native call did: its answer or what it threw, the log lines it wrote, the service
 * operations it reached and the static fields of MmiNativeManager it wrote. The sequence adds its
 * verdict.
 */
final class StepRecord {
    final String method;
    final Object[] args;
    Object result;
    Throwable thrown;
    String[] logs;
    String[] calls;
    /** The static fields the call wrote, with what it wrote, in declaration order. */
    final Map<String, Object> fields = new LinkedHashMap<>();
    /** Time spent in the method, over every run of the step. */
    double seconds;
    /** Set by the sequence: what a healthy device answers, and whether every run answered that. */
    String expected;
    boolean passed = true;
    /** Set by the sequence: the first error-priority line a healthy device would not have caused. */
    String error;
    /** Set by the sequence: the step's position in it, how often it ran and how often it failed. */
    int number;
    int runs = 1;
    int failedRuns;

    StepRecord(String method, Object[] args) {
        this.method = method;
        this.args = args;
    }

    /**
     * Calls m and collects what it caused. Each static field is set to a fresh object first, so a
     * field the call wrote is told apart by identity, even when it wrote the text already there;
     * the fields it left alone get their values back.
     */
    static StepRecord invoke(Method m, Object[] args) {
        StepRecord r = new StepRecord(m.getName(), args);
        List<Field> statics = staticFields();
        Object[] before = new Object[statics.size()];
        Object[] marks = new Object[statics.size()];
        for (int i = 0; i < statics.size(); i++) {
            before[i] = get(statics.get(i));
            marks[i] = new String("unwritten");
            set(statics.get(i), marks[i]);
        }
        long start = System.nanoTime();
        try {
            r.result = Natives.invoke(m, args);
        } catch (Throwable t) {
            r.thrown = t;
        }
        SimulatedDevice.waitIdle();
        r.seconds = (System.nanoTime() - start) / 1e9;
        r.logs = SimulatedDevice.takeLogs();
        r.calls = SimulatedDevice.takeCalls();
        for (int i = 0; i < statics.size(); i++) {
            Object now = get(statics.get(i));
            if (now == marks[i]) {
                set(statics.get(i), before[i]);
            } else {
                r.fields.put(statics.get(i).getName(), now);
            }
        }
        return r;
    }

    /** Judges the answer and the log lines against what a healthy device gives the step. */
    StepRecord judge(FactorySequence.Step step) {
        expected = step.expect.shown();
        error = Arrays.stream(logs).filter(step::unhealthy).findFirst().orElse(null);
        passed = thrown == null && step.expect.test(result) && error == null;
        failedRuns = passed ? 0 : 1;
        return this;
    }

    /** Why the step failed, after what it answered: the healthy answer, and the error line when there is one. */
    String why() {
        return "answered " + shown() + ", healthy answer " + expected + (error == null ? "" : "; logged " + error);
    }

    /** The answer as the console prints it. */
    String shown() {
        return thrown != null ? "threw " + thrown : Values.format(result);
    }

    /**
     * Two runs of one step as one: the first failing run tells what went wrong, so it stands for
     * both; times and counts add up.
     */
    static StepRecord merge(StepRecord earlier, StepRecord later) {
        StepRecord shown = earlier.failedRuns == 0 && later.failedRuns > 0 ? later : earlier;
        shown.seconds = earlier.seconds + later.seconds;
        shown.runs = earlier.runs + later.runs;
        shown.failedRuns = earlier.failedRuns + later.failedRuns;
        shown.passed = shown.failedRuns == 0;
        shown.number = earlier.number;
        return shown;
    }

    String shownArguments(String separator) {
        return shownArguments(args, separator);
    }

    static String shownArguments(Object[] args, String separator) {
        List<String> shown = new ArrayList<>();
        for (Object a : args) {
            shown.add(Values.format(a));
        }
        return String.join(separator, shown);
    }

    /** The lines ./mmi call prints after the result: fields written, log lines, service calls. */
    List<String> detail() {
        List<String> lines = new ArrayList<>();
        fields.forEach((name, value) -> lines.add("field: " + name + " = " + Values.format(value)));
        for (String line : logs) {
            lines.add("log: " + line);
        }
        for (String line : calls) {
            lines.add("call: " + line);
        }
        return lines;
    }

    /** One JSON object: method, arguments, result, log lines with priority, calls, fields written. */
    void writeJson(JsonWriter out) throws IOException {
        out.beginObject();
        out.name("method").value(method);
        out.name("arguments").beginArray();
        for (Object a : args) {
            Values.write(out, a);
        }
        out.endArray();
        if (thrown != null) {
            out.name("threw").value(thrown.toString());
        } else {
            out.name("result");
            Values.write(out, result);
        }
        if (expected != null) {
            out.name("number").value(number);
            out.name("expected").value(expected);
            out.name("passed").value(passed);
            out.name("runs").value(runs);
            out.name("failed_runs").value(failedRuns);
            out.name("duration_ms").value(Math.round(seconds * 1e6) / 1e3);
        }
        writeLogs(out, "logs", logs);
        out.name("calls").beginArray();
        for (String c : calls) {
            out.value(c);
        }
        out.endArray();
        out.name("fields").beginObject();
        for (Map.Entry<String, Object> f : fields.entrySet()) {
            out.name(f.getKey());
            Values.write(out, f.getValue());
        }
        out.endObject();
        out.endObject();
    }

    /** Log lines "P TEXT" as objects with the priority letter and the text. */
    static void writeLogs(JsonWriter out, String name, String[] lines) throws IOException {
        out.name(name).beginArray();
        for (String line : lines) {
            out.beginObject();
            out.name("priority").value(line.substring(0, 1));
            out.name("text").value(line.length() > 2 ? line.substring(2) : "");
            out.endObject();
        }
        out.endArray();
    }

    /** The fields a native method may write: MmiNativeManager's static, non-final texts. */
    private static List<Field> staticFields() {
        List<Field> fields = new ArrayList<>();
        for (Field f : MmiNativeManager.class.getDeclaredFields()) {
            int m = f.getModifiers();
            if (Modifier.isStatic(m) && Modifier.isPublic(m) && !Modifier.isFinal(m) && f.getType() == String.class) {
                fields.add(f);
            }
        }
        return fields;
    }

    private static Object get(Field f) {
        try {
            return f.get(null);
        } catch (IllegalAccessException e) {
            throw new IllegalStateException(e);
        }
    }

    private static void set(Field f, Object value) {
        try {
            f.set(null, value);
        } catch (IllegalAccessException e) {
            throw new IllegalStateException(e);
        }
    }
}
