package com.tavrin.mmitest.console;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.lang.invoke.MethodType;
import java.lang.reflect.Method;
import java.util.Arrays;
import java.util.Set;
import java.util.TreeSet;
import java.util.stream.Collectors;
import java.util.stream.Stream;

import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.Arguments;
import org.junit.jupiter.params.provider.MethodSource;

/** The factory-test sequence covers every native method, and every step's arguments fit its method. */
class FactorySequenceTest {
    static Stream<Arguments> steps() {
        return FactorySequence.steps().stream().map(s -> Arguments.of(s.method(), s));
    }

    @ParameterizedTest(name = "{index} {0}")
    @MethodSource("steps")
    void argumentsFitTheMethod(String method, FactorySequence.Step step) {
        Class<?>[] types = step.resolve().getParameterTypes();
        assertEquals(types.length, step.args().length, "argument count");
        for (int i = 0; i < types.length; i++) {
            assertTrue(MethodType.methodType(types[i]).wrap().returnType().isInstance(step.args()[i]),
                    method + " takes " + Arrays.toString(types) + ", given " + Arrays.deepToString(step.args()));
        }
    }

    @Test
    void everyNativeMethodIsCovered() {
        Set<String> missing = Natives.all().stream().map(Method::getName).collect(Collectors.toCollection(TreeSet::new));
        FactorySequence.steps().forEach(s -> missing.remove(s.method()));
        assertEquals(Set.of(), missing);
    }
}
