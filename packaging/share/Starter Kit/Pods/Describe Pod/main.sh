#!/bin/sh
# Describes the chosen pod, with its latest events.
if [ "$NAMESPACE" = "All Namespaces" ]; then
    echo "Choose the namespace of $POD first." >&2
    exit 1
fi
exec "$KUBECTL" describe "pod/$POD" --context="$CONTEXT" --namespace="$NAMESPACE"
