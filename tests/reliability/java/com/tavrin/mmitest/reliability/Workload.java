package com.tavrin.mmitest.reliability;

import com.tavrin.mmitest.controller.MmiNativeManager;
import com.tavrin.mmitest.model.BigDataOperation;
import com.tavrin.mmitest.model.BigDataValue;

import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.SplittableRandom;
import java.util.concurrent.atomic.AtomicLongArray;

/**
 * Every native of MmiNativeManager called the way the app calls it, from Java, with fixed
 * arguments, so that each call's answer can be compared with what the device was programmed to
 * give. The answer of a call is shown as text: a number, true or false, a quoted string, an int
 * array as [a, b, ...], or null.
 */
public final class Workload {
    public static final int METHODS = 52;

    // Indices into the counters that run() returns.
    public static final int CALLS = 0;
    public static final int SUCCESS = 1;
    public static final int FAILURE = 2;
    public static final int OLDER = 3;
    public static final int WRONG = 4;
    public static final int THROWN = 5;
    public static final int STUCK_THREADS = 6;
    public static final int LEAST_CALLED = 7;
    public static final int COUNTERS = 8;

    private static final int[] RAW_DATA = {3, 1, 4, 1, 5, 9, 2, 6};
    private static final byte[] SIGNATURE = {0x00, 0x7f, (byte) 0xa5, (byte) 0xff};

    private static volatile String sProblems = "";
    private static volatile String sOlderFrom = "";

    private Workload() {}

    private static String text(int v) { return Integer.toString(v); }
    private static String text(long v) { return Long.toString(v); }
    private static String text(boolean v) { return v ? "true" : "false"; }
    private static String text(String s) { return s == null ? "null" : '"' + s + '"'; }
    private static String text(int[] a) { return a == null ? "null" : Arrays.toString(a); }

    private static BigDataValue value() {
        return new BigDataValue(7, "tp", "capacitance", "42", "10", "90", "pass")
                .version(1).dataSource(2).errorCode(0).cycle(3);
    }

    private static BigDataOperation operation() {
        return new BigDataOperation(1, 2, 3, "KX2611220001A7", "MMI1", 4);
    }

    /** Calls native index (its row in the registration table) once and shows its answer. */
    public static String call(int index) {
        switch (index) {
            case 0: return text(MmiNativeManager.setApPressureCalibExternNative(1, 10, RAW_DATA));
            case 1: return text(MmiNativeManager.isTpPressureSupportNative());
            case 2: return text(MmiNativeManager.getTpPressureStatusNative());
            case 3: return text(MmiNativeManager.getTpPressureVerifyResultNative(1));
            case 4: return text(MmiNativeManager.controlTpPressureCalibModeNative(0));
            case 5: return text(MmiNativeManager.setTpPressureCalibrationNative(1, 2));
            case 6: return text(MmiNativeManager.setTpPressureVerificationNative(0, 3));
            case 7: return text(MmiNativeManager.getTpPressureWaitingTimeNative());
            case 8: return text(MmiNativeManager.checkTpPressureCalibPositionNative(1, 2, 3));
            case 9: return text(MmiNativeManager.isFactoryVersionNative());
            case 10: return text(MmiNativeManager.getManufactureFileNameNative());
            case 11: return text(MmiNativeManager.releaseFactoryHidlResourceNative());
            case 12: return text(MmiNativeManager.setMmiResultNative(1, 2));
            case 13: return text(MmiNativeManager.getCapacitanceTestResultNative());
            case 14: return text(MmiNativeManager.getTouchKeyCapacitanceTestResultNative());
            case 15: return text(MmiNativeManager.getTouchKeySupportFlagNative());
            case 16: return text(MmiNativeManager.getCapacitanceCalibrateResultNative(1));
            case 17: return text(MmiNativeManager.getSensorCalibrateDelayTimeNative(1));
            case 18: return text(MmiNativeManager.getSensorSelfTestDelayTimeNative(1));
            case 19: return text(MmiNativeManager.startSensorCalibrateNative(1, 2));
            case 20: return text(MmiNativeManager.startSensorSelfTestNative(1, 2));
            case 21: return text(MmiNativeManager.getSensorCalibrateResultNative(1));
            case 22: return text(MmiNativeManager.getSensorSelfTestResultNative(1));
            case 23: return text(MmiNativeManager.setLightBrightnessNative(1, 255));
            case 24: return text(MmiNativeManager.getBsnNative());
            case 25: return text(MmiNativeManager.getPowerStateNative("battery"));
            case 26: return text(MmiNativeManager.getSensorCalibrateTypeNative(1));
            case 27: return text(MmiNativeManager.sendBigDataOperationNative(operation()));
            case 28: return text(MmiNativeManager.sendBigDataValueNative(value()));
            case 29: return text(MmiNativeManager.checkUsbSpeedNative("usb3"));
            case 30: return text(MmiNativeManager.getMmiAutoStartFlagNative());
            case 31: return text(MmiNativeManager.disableMmiAutoStartNative("0"));
            case 32: return text(MmiNativeManager.getCompassRawValueLimitNative());
            case 33: return text(MmiNativeManager.getManufactureStationFlagNative(3));
            case 34: return text(MmiNativeManager.setTestCycleNative(7, 3));
            case 35: return text(MmiNativeManager.getManufactureModeNative());
            case 36: return text(MmiNativeManager.setProximitySensorExternalIrModeNative(1));
            case 37: return text(MmiNativeManager.setPowerStateNative("charge", "limit=80"));
            case 38: return text(MmiNativeManager.getMmiDeviceFeaturesCheckResultNative(1));
            case 39: return text(MmiNativeManager.getOeminfoNative(143, 64, 0));
            case 40: return text(MmiNativeManager.sensorActivateNative(5, true, 200));
            case 41: return text(MmiNativeManager.getFlickerFrequencyNative(1));
            case 42: return text(MmiNativeManager.handleSensorParameterNative(1, 2, 3, 4));
            case 43: return text(MmiNativeManager.handleAmbientLightParameterNative(1, 2, 3, 4));
            case 44: return text(MmiNativeManager.setTouchScreenFeatureConfigNative(1, "glove=on"));
            case 45: return text(MmiNativeManager.getScreenFpsConfigNative());
            case 46: return text(MmiNativeManager.setScreenFpsNative(1));
            case 47: return text(MmiNativeManager.getVerifySignatureResultNative(SIGNATURE));
            case 48: return text(MmiNativeManager.setMockCardTestModeNative("1"));
            case 49: return text(MmiNativeManager.getMockCardTestResultNative());
            case 50: return text(MmiNativeManager.getRotaryCrownSelfTestNative());
            case 51: return text(MmiNativeManager.executeHighTemperInterceptCmdNative("scene", "t=85"));
            default: throw new IllegalArgumentException("no native " + index);
        }
    }

    /** Calls every native rounds times in table order (a steady load for leak checks). */
    public static void rounds(int rounds) {
        for (int r = 0; r < rounds; r++) {
            for (int i = 0; i < METHODS; i++) {
                call(i);
            }
        }
    }

    /** The first answers that were neither expected one, with their method; "" when none. */
    public static String problems() {
        return sProblems;
    }

    /** The natives that gave their older-version answer in the last run, as "index xN" items. */
    public static String olderFrom() {
        return sOlderFrom;
    }

    private static synchronized void report(String problem) {
        if (sProblems.length() < 4000) {
            sProblems = sProblems + problem + "\n";
        }
    }

    /**
     * threads Java threads call random natives for millis milliseconds. Every answer must be the
     * method's success answer, its failure answer, or the answer it gives a service of an older
     * version (a service dying under a version cast looks like one). Returns the counters above.
     */
    public static long[] run(int threads, long millis, String[] success, String[] failure,
            String[] older, long seed) throws InterruptedException {
        sProblems = "";
        final long deadline = System.nanoTime() + millis * 1_000_000L;
        final AtomicLongArray perMethod = new AtomicLongArray(METHODS);
        final AtomicLongArray olderPerMethod = new AtomicLongArray(METHODS);
        final long[][] counts = new long[threads][COUNTERS];
        List<Thread> workers = new ArrayList<>();
        for (int t = 0; t < threads; t++) {
            final long[] mine = counts[t];
            final SplittableRandom random = new SplittableRandom(seed + t);
            Thread worker = new Thread(() -> {
                while (System.nanoTime() < deadline) {
                    int i = random.nextInt(METHODS);
                    String answer;
                    try {
                        answer = call(i);
                    } catch (Throwable e) {  // a native must never throw: count it and go on
                        mine[THROWN]++;
                        report(i + " threw " + e);
                        continue;
                    } finally {
                        mine[CALLS]++;
                        perMethod.incrementAndGet(i);
                    }
                    if (answer.equals(success[i])) {
                        mine[SUCCESS]++;
                    } else if (answer.equals(failure[i])) {
                        mine[FAILURE]++;
                    } else if (answer.equals(older[i])) {
                        mine[OLDER]++;
                        olderPerMethod.incrementAndGet(i);
                    } else {
                        mine[WRONG]++;
                        report(i + " answered " + answer);
                    }
                }
            }, "stress-" + t);
            worker.setDaemon(true);  // a call stuck for good must not keep the JVM from exiting
            workers.add(worker);
        }
        for (Thread w : workers) {
            w.start();
        }
        long[] total = new long[COUNTERS];
        long joinDeadline = System.currentTimeMillis() + millis + 120_000L;
        for (int t = 0; t < threads; t++) {
            Thread w = workers.get(t);
            w.join(Math.max(1, joinDeadline - System.currentTimeMillis()));
            if (w.isAlive()) {
                total[STUCK_THREADS]++;
                continue;
            }
            for (int c = 0; c < LEAST_CALLED; c++) {
                total[c] += counts[t][c];
            }
        }
        long least = Long.MAX_VALUE;
        StringBuilder olderFrom = new StringBuilder();
        for (int i = 0; i < METHODS; i++) {
            least = Math.min(least, perMethod.get(i));
            if (olderPerMethod.get(i) > 0) {
                olderFrom.append(olderFrom.length() == 0 ? "" : ", ").append(i).append(" x")
                        .append(olderPerMethod.get(i));
            }
        }
        sOlderFrom = olderFrom.toString();
        total[LEAST_CALLED] = least;
        return total;
    }
}
