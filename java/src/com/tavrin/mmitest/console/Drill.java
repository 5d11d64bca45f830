package com.tavrin.mmitest.console;

import com.tavrin.mmitest.console.FactorySequence.Probe;
import com.tavrin.mmitest.console.FactorySequence.Step;
import com.tavrin.mmitest.sim.Catalogue;
import com.tavrin.mmitest.console.RunReport.DrillCheck;
import com.tavrin.mmitest.console.RunReport.Status;
import com.tavrin.mmitest.sim.Call;
import com.tavrin.mmitest.sim.LogLine;
import com.tavrin.mmitest.sim.SimulatedDevice;

import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.stream.Stream;

import picocli.CommandLine.TypeConversionException;


/**
 * The service-death drill: one service dies (killed, or crashed in the middle of a call) and comes
 * back. Any death releases every handle, so while it is down every probe that answered before must
 * answer its failure value without reaching a service; once it is back every probe must answer as
 * before.
 */
final class Drill {
    enum Fault {
        kill, crash;

        static Fault parse(String value) {
            return Arrays.stream(values()).filter(f -> f.name().equals(value)).findFirst().orElseThrow(
                    () -> new TypeConversionException("--drill-fault takes kill or crash, got '" + value + "'"));
        }
    }

    /** What the probes answered in each phase, and what the device logged at each turn. */
    record Phases(List<StepRecord> before, List<StepRecord> down, List<StepRecord> after, List<LogLine> killLogs,
            List<LogLine> restartLogs, List<LogLine> reviveLogs, double faultSeconds, double reviveSeconds) {}

    private final String service;
    private final Fault fault;
    private final DeviceOptions device;
    private final List<Step> probes;
    /** The service each probe reaches, by the device's catalogue. */
    private final List<String> reached;

    Drill(String service, Fault fault, DeviceOptions device) {
        this.service = service;
        this.fault = fault;
        this.device = device;
        Catalogue catalogue = SimulatedDevice.catalogue();
        List<Probe> all = FactorySequence.probes();
        probes = all.stream().map(Probe::step).toList();
        reached = all.stream().map(p -> catalogue.services().stream().filter(s -> s.operation(p.operation())
                .isPresent()).findFirst().orElseThrow().name()).toList();
    }

    boolean neverRestarts() {
        return device.restartDelay < 0;
    }

    /** Whether the drill brings the service back itself, rather than its own restart. */
    boolean revivedByDrill() {
        return fault == Fault.kill || neverRestarts();
    }

    String title() {
        return fault == Fault.kill ? "kill " + service + ", then revive it" : "crash " + service + " in a call, then "
                + (neverRestarts() ? "revive it (it never restarts)" : "let it restart");
    }

    /** Runs the drill on the started device and judges it into the report. */
    void run(RunReport report) {
        SimulatedDevice.takeLogLines();
        List<StepRecord> before = probe();
        long faultStart = System.nanoTime();
        if (fault == Fault.kill) {
            SimulatedDevice.kill(service);
        } else {
            crash(before);
        }
        SimulatedDevice.waitIdle();
        double faultSeconds = seconds(faultStart);
        List<LogLine> killLogs = SimulatedDevice.takeLogLines();
        List<StepRecord> down = probe();

        long reviveStart = System.nanoTime();
        List<LogLine> restartLogs = List.of();
        if (fault == Fault.crash && !neverRestarts()) {
            // The restart was held until the probes had seen the service down: it lands now, after
            // the restart delay counted from the crash, as the platform would restart it.
            long left = device.restartDelay - (System.nanoTime() - faultStart) / 1_000_000;
            device.awaitRestart(service + " to restart", left, () -> {
                Thread.sleep(Math.max(0, left));
                return null;
            });
        } else if (fault == Fault.crash) {
            restartLogs = SimulatedDevice.takeLogLines();
        }
        SimulatedDevice.revive(service);
        SimulatedDevice.waitIdle();
        SimulatedDevice.setRestartDelay(device.restartDelay);
        List<LogLine> reviveLogs = SimulatedDevice.takeLogLines();
        double reviveSeconds = seconds(reviveStart);
        List<StepRecord> after = probe();
        Phases phases = new Phases(before, down, after, killLogs, restartLogs, reviveLogs, faultSeconds,
                reviveSeconds);
        report.killLogs = killLogs;
        report.downLogs = down.stream().flatMap(r -> r.logs.stream()).toList();
        report.reviveLogs = Stream.concat(restartLogs.stream(), reviveLogs.stream()).toList();
        report.checks.addAll(judge(service, probes, reached, phases, fault == Fault.crash && neverRestarts()));
    }

    /**
     * Makes the operation that the drill's service's first probe reaches crash under that probe,
     * then puts the answers back as the command line set them. The restart is held until the
     * drill has probed the service while down, so a short restart delay cannot hide the death.
     */
    private void crash(List<StepRecord> before) {
        for (int i = 0; i < probes.size(); i++) {
            List<Call> calls = before.get(i).calls;
            if (calls.isEmpty() || !reached.get(i).equals(service)) {
                continue;
            }
            String operation = calls.get(0).operation();
            String error = SimulatedDevice.program(service, operation, Fault.crash.name());
            if (error != null) {
                throw new Console.Failure("the device cannot crash " + service + "." + operation + ": " + error);
            }
            SimulatedDevice.setRestartDelay(-1);
            try {
                Natives.invoke(probes.get(i).resolve(), probes.get(i).args());
            } catch (Throwable t) {
                throw new Console.Failure("the crashing call of " + service + "." + operation + " threw " + t);
            }
            SimulatedDevice.resetAnswers();
            device.programAnswers();
            return;
        }
        throw new Console.Failure("no probe of " + service + " reaches it");
    }

    /** The checks of a drill, from what its probes answered and what was logged. */
    static List<DrillCheck> judge(String service, List<Step> probes, List<String> services, Phases p,
            boolean staysDown) {
        List<DrillCheck> checks = new ArrayList<>();
        int killedHealthy = 0;
        int othersHealthy = 0;
        int downCalls = 0;
        for (int i = 0; i < probes.size(); i++) {
            Step probe = probes.get(i);
            StepRecord b = p.before().get(i);
            StepRecord d = p.down().get(i);
            StepRecord a = p.after().get(i);
            String reached = services.get(i);
            downCalls += d.calls.size();
            if (b.passed) {
                killedHealthy += reached.equals(service) ? 1 : 0;
                othersHealthy += reached.equals(service) ? 0 : 1;
            }
            boolean released = d.thrown == null && probe.isFailureValue(d.result);
            boolean restored = a.passed && b.shown().equals(a.shown());
            Status status = !b.passed ? Status.SKIPPED : released && restored ? Status.OK : Status.FAIL;
            String why = !b.passed ? "failing before the kill" : !released ? "answered while down"
                    : !restored ? "not restored" : "ok";
            checks.add(new DrillCheck(reached + ": " + b.request(), status, why,
                    List.of("before: " + b.shown(), "while down: " + d.shown(), "after revive: " + a.shown()),
                    RunReport.ms(b.seconds + d.seconds + a.seconds)));
        }
        double before = p.before().stream().mapToDouble(r -> r.seconds).sum();
        double down = p.down().stream().mapToDouble(r -> r.seconds).sum();
        checks.add(DrillCheck.line(killedHealthy > 0, "requests answer before the kill", killedHealthy
                + " request(s) of " + service + " and " + othersHealthy + " of other services answered before the kill",
                before));
        checks.add(DrillCheck.line(contains(p.killLogs(), "ProcessServiceDied"), "the death is reported",
                "the death is reported", p.faultSeconds()));
        checks.add(DrillCheck.line(downCalls == 0, "no service is called while down",
                "no service is called while the handles are released (" + downCalls + " calls)", down));
        if (staysDown) {
            checks.add(DrillCheck.line(!contains(p.restartLogs(), "ReinitHal"), "the service stays down",
                    service + " stays down until the drill revives it (--restart-delay never)", down));
        }
        checks.add(DrillCheck.line(contains(p.restartLogs(), "ReinitHal") || contains(p.reviveLogs(), "ReinitHal"),
                "the new registration is reported", "the new registration is reported", p.reviveSeconds()));
        return checks;
    }

    /** What every probe answers now; the calls made before are not theirs. */
    private List<StepRecord> probe() {
        SimulatedDevice.takeCallRecords();
        return probes.stream().map(p -> StepRecord.invoke(p.resolve(), p.args()).judge(p)).toList();
    }

    private static boolean contains(List<LogLine> lines, String text) {
        return lines.stream().anyMatch(line -> line.text().contains(text));
    }

    private static double seconds(long since) {
        return (System.nanoTime() - since) / 1e9;
    }
}
