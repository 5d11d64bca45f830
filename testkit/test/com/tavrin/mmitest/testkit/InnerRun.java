package com.tavrin.mmitest.testkit;

import static org.junit.platform.engine.discovery.DiscoverySelectors.selectClass;

import java.io.PrintWriter;
import java.io.StringWriter;
import java.util.ArrayList;
import java.util.List;
import java.util.Map;

import org.junit.platform.engine.TestExecutionResult;
import org.junit.platform.engine.discovery.ClassSelector;
import org.junit.platform.launcher.LauncherDiscoveryRequest;
import org.junit.platform.launcher.TestExecutionListener;
import org.junit.platform.launcher.TestIdentifier;
import org.junit.platform.launcher.core.LauncherDiscoveryRequestBuilder;
import org.junit.platform.launcher.core.LauncherFactory;
import org.junit.platform.launcher.listeners.SummaryGeneratingListener;
import org.junit.platform.launcher.listeners.TestExecutionSummary;

/**
 * A JUnit run inside a test, of classes that the class-path scan leaves out (their names do not
 * end in Test). The test that starts it must not use the extension, or the run would wait for
 * that test's turn.
 */
final class InnerRun {
    final TestExecutionSummary summary;
    /** Each test's method name with its outcome: "name: OK" or "name: the exception". */
    final List<String> outcomes = new ArrayList<>();

    private InnerRun(TestExecutionSummary summary) {
        this.summary = summary;
    }

    static InnerRun of(Map<String, String> configuration, Class<?>... classes) {
        List<ClassSelector> selectors = new ArrayList<>();
        for (Class<?> c : classes) {
            selectors.add(selectClass(c));
        }
        LauncherDiscoveryRequest request = LauncherDiscoveryRequestBuilder.request().selectors(selectors)
                .configurationParameters(configuration).build();
        SummaryGeneratingListener summary = new SummaryGeneratingListener();
        List<String> outcomes = new ArrayList<>();
        TestExecutionListener each = new TestExecutionListener() {
            @Override
            public void executionFinished(TestIdentifier test, TestExecutionResult result) {
                if (test.isTest()) {
                    String name = test.getDisplayName();
                    outcomes.add(name.substring(0, name.indexOf('(') < 0 ? name.length() : name.indexOf('(')) + ": " + result.getThrowable().map(Throwable::toString).orElse("OK"));
                }
            }
        };
        LauncherFactory.create().execute(request, summary, each);
        InnerRun run = new InnerRun(summary.getSummary());
        run.outcomes.addAll(outcomes);
        return run;
    }

    String failures() {
        StringWriter out = new StringWriter();
        summary.printFailuresTo(new PrintWriter(out), 20);
        return out + "\n" + outcomes;
    }
}
