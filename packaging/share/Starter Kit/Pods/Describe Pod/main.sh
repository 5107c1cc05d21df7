#!/bin/sh
# Describes the chosen pod, with its latest events.
exec "$KUBECTL" describe "pod/$POD" --context="$CONTEXT" --namespace="$NAMESPACE"
