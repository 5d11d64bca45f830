package com.tavrin.mmitest.console;

import com.tavrin.mmitest.controller.MmiNativeManager;
import com.tavrin.mmitest.sim.Call;
import com.tavrin.mmitest.sim.LogLine;
import com.tavrin.mmitest.sim.SimulatedDevice;

import java.lang.reflect.Field;
import java.lang.reflect.Method;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.stream.Collectors;

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
    /** Set by the sequence: what a healthy device answers. */
    String expected;
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
        record Watched(Field field, Object before, Object mark) {}
        StepRecord r = new StepRecord(m.getName(), args);
        try {
            List<Watched> watched = new ArrayList<>();
            for (String name : SimulatedDevice.catalogue().writtenFields()) {
                Field field = MmiNativeManager.class.getField(name);
                watched.add(new Watched(field, field.get(null), new String("unwritten")));
                field.set(null, watched.get(watched.size() - 1).mark());
            }
            long start = System.nanoTime();
            try {
                r.result = Natives.invoke(m, args);
            } catch (Throwable t) {
                r.thrown = t;
            }
            SimulatedDevice.waitIdle();
            r.seconds = (System.nanoTime() - start) / 1e9;
            for (Watched w : watched) {
                Object now = w.field().get(null);
                if (now == w.mark()) {
                    w.field().set(null, w.before());
                } else {
                    r.fields.put(w.field().getName(), now);
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
        expected = step.expect().shown();
        error = logs.stream().filter(step::unhealthy).findFirst().orElse(null);
        failedRuns = thrown == null && step.expect().healthy().test(result) && error == null ? 0 : 1;
        return this;
    }

    /** Whether every run answered what a healthy device answers; a call the sequence did not judge passed. */
    boolean passed() {
        return failedRuns == 0;
    }

    /** Why the step failed, after what it answered: the healthy answer, and the error line when there is one. */
    String why() {
        return "answered " + shown() + ", healthy answer " + expected + (error == null ? "" : "; logged " + error);
    }

    /** How many of several runs failed, as the summary and the results files put it; empty for one run. */
    String runsFailed() {
        return runs > 1 ? failedRuns + " of " + runs + " runs failed; " : "";
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
        shown.number = earlier.number;
        return shown;
    }

    /** The request as the tables and the summary show it: method(arguments). */
    String request() {
        return request(method, args);
    }

    static String request(String method, Object[] args) {
        return method + "(" + shownArguments(args, ", ") + ")";
    }

    static String shownArguments(Object[] args, String separator) {
        return Arrays.stream(args).map(Values::format).collect(Collectors.joining(separator));
    }

    /** The lines ./mmi call prints after the result: fields written, log lines, service calls. */
    List<String> detail() {
        List<String> lines = new ArrayList<>();
        fields.forEach((name, value) -> lines.add("field: " + name + " = " + Values.format(value)));
        logs.forEach(line -> lines.add("log: " + line));
        calls.forEach(call -> lines.add("call: " + call));
        return lines;
    }

    /** The JSON object: method, arguments, result, the verdict when judged, log lines, calls, fields written. */
    Map<String, Object> json() {
        Map<String, Object> json = new LinkedHashMap<>();
        json.put("method", method);
        json.put("arguments", Arrays.asList(args));
        json.put(thrown != null ? "threw" : "result", thrown != null ? thrown.toString() : result);
        if (expected != null) {
            json.put("number", number);
            json.put("expected", expected);
            json.put("passed", passed());
            json.put("runs", runs);
            json.put("failed_runs", failedRuns);
            json.put("duration_ms", RunReport.ms(seconds));
        }
        json.put("logs", RunReport.Log.of(logs));
        json.put("calls", calls.stream().map(Call::toString).toList());
        json.put("fields", fields);
        return json;
    }
}
