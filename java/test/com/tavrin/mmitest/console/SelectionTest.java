package com.tavrin.mmitest.console;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.Arrays;
import java.util.List;
import java.util.stream.Collectors;

import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

/** Which steps --step and -k choose: step numbers as --list shows them. */
class SelectionTest {
    private static List<FactoryRun.Range> numbers(String text) {
        return text.isEmpty() ? List.of() : Arrays.stream(text.split(" ")).map(FactoryRun.Range::parse)
                .collect(Collectors.toList());
    }

    /** The chosen step numbers, written as the results files record them (1-3,7). */
    @ParameterizedTest(name = "--step {0} -k {1}")
    @CsvSource(delimiter = '|', nullValues = "-", value = {
        "'' | - | 1-54", "37 | - | 37", "38 37 | - | 37-38", "'' | SelfTest | 31,36-38", "'' | selftest | 31,36-38",
        "37 38 39 | sensorselftest | 37-38", "1 54 | - | 1,54", "2-5 9 | - | 2-5,9",
        "30-40 | SelfTest | 31,36-38"})
    void chosen(String steps, String keyword, String expected) {
        List<Integer> chosen = FactoryRun.select(FactorySequence.steps(), numbers(steps), keyword).stream()
                .map(i -> i + 1).collect(Collectors.toList());
        assertEquals(expected, RunReport.ranges(chosen));
    }

    @ParameterizedTest(name = "--step {0} -k {1}")
    @CsvSource(delimiter = '|', nullValues = "-", value = {"0 | - | numbered 1 to 54", "55 | - | numbered 1 to 54",
        "'' | nothing | no step matches -k nothing", "1 | SelfTest | no step matches -k SelfTest among --step 1"})
    void refused(String steps, String keyword, String reason) {
        IllegalArgumentException e = assertThrows(IllegalArgumentException.class,
                () -> FactoryRun.select(FactorySequence.steps(), numbers(steps), keyword));
        assertTrue(e.getMessage().contains(reason), e.getMessage());
    }
}
