package com.tavrin.mmitest.console;

import com.google.gson.stream.JsonWriter;
import com.tavrin.mmitest.controller.MmiNativeManager;
import com.tavrin.mmitest.sim.Call;
import com.tavrin.mmitest.sim.LogLine;
import com.tavrin.mmitest.sim.SimulatedDevice;

import java.io.IOException;
import java.lang.reflect.Field;
import java.lang.reflect.Method;
import java.util.ArrayList;
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
    List<LogLine> logs = List.of();
    List<Call> calls = List.of();
    /** The static fields the call wrote, with what it wrote, in declaration order. */
    final Map<String, Object> fields = new LinkedHashMap<>();
    /** Time spent in the method, over every run of the step. */
    double seconds;
    /** Set by the sequence: what a healthy device answers, and whether every run answered that. */
    String expected;
    boolean passed = true;
    /** Set by the sequence: the first error-priority line a healthy device would not have caused. */
    LogLine error;
    /** Set by the sequence: the step's position in it, how often it ran and how often it failed. */
    int number;
    int runs = 1;
    int failedRuns;

    StepRecord(String method, Object[] args) {
        this.method = method;
        this.args = args;
    }

    /**
     * Calls m and collects what it caused. Each field the library writes is set to a fresh object
     * first, so a field the call wrote is told apart by identity, even when it wrote the text
     * already there; the fields it left alone get their values back.
     */
    static StepRecord invoke(Method m, Object[] args) {
        StepRecord r = new StepRecord(m.getName(), args);
        List<Field> written = new ArrayList<>();
        try {
            for (String name : SimulatedDevice.catalogue().writtenFields()) {
                written.add(MmiNativeManager.class.getField(name));
            }
            Object[] before = new Object[written.size()];
            Object[] marks = new Object[written.size()];
            for (int i = 0; i < written.size(); i++) {
                before[i] = written.get(i).get(null);
                marks[i] = new String("unwritten");
                written.get(i).set(null, marks[i]);
            }
            long start = System.nanoTime();
            try {
                r.result = Natives.invoke(m, args);
            } catch (Throwable t) {
                r.thrown = t;
            }
            SimulatedDevice.waitIdle();
            r.seconds = (System.nanoTime() - start) / 1e9;
            for (int i = 0; i < written.size(); i++) {
                Object now = written.get(i).get(null);
                if (now == marks[i]) {
                    written.get(i).set(null, before[i]);
                } else {
                    r.fields.put(written.get(i).getName(), now);
                }
            }
        } catch (ReflectiveOperationException e) {
            throw new IllegalStateException("MmiNativeManager lacks a field the library writes: " + e.getMessage());
        }
        r.logs = SimulatedDevice.takeLogLines();
        r.calls = SimulatedDevice.takeCallRecords();
        return r;
    }

    /** Judges the answer and the log lines against what a healthy device gives the step. */
    StepRecord judge(FactorySequence.Step step) {
        expected = step.expect.shown();
        error = logs.stream().filter(step::unhealthy).findFirst().orElse(null);
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
        logs.forEach(line -> lines.add("log: " + line));
        calls.forEach(call -> lines.add("call: " + call));
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
            out.name("duration_ms").value(RunReport.ms(seconds));
        }
        out.name("logs");
        Values.write(out, RunReport.Log.of(logs));
        out.name("calls");
        Values.write(out, calls.stream().map(Call::toString).toList());
        out.name("fields");
        Values.write(out, fields);
        out.endObject();
    }
}
