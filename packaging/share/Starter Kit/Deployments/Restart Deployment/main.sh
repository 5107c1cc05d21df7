#!/bin/sh
# Replaces the pods of the chosen deployment, a few at a time.
exec "$KUBECTL" rollout restart "deployment/$DEPLOYMENT" --context="$CONTEXT" --namespace="$NAMESPACE"
